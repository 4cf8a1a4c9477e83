// SPDX-License-Identifier: MIT

#include "platform/linux/CombinedMeans.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

class CombinedHotKeys final : public HotKeyMeans {
  public:
    explicit CombinedHotKeys(std::vector<std::shared_ptr<HotKeyMeans>> means)
        : means_(std::move(means)) {}

    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                      std::uint32_t modifiers) override {
        platform::OSStatus status = platform::eventInternalErr;
        for (const auto& means : means_) {
            const platform::OSStatus answer = means->registerHotKey(number, keyCode, modifiers);
            // A means without a session knows of no other reason.
            if (status == platform::eventInternalErr) {
                status = answer;
            }
        }
        return status;
    }
    void unregisterHotKey(HotKeyNumber number) override {
        for (const auto& means : means_) {
            means->unregisterHotKey(number);
        }
    }
    void expectLift(std::uint32_t modifiers) override {
        for (const auto& means : means_) {
            means->expectLift(modifiers);
        }
    }
    bool canTakeOver() const override {
        return std::ranges::any_of(means_, [](const auto& means) { return means->canTakeOver(); });
    }
    void takeOver() override {
        for (const auto& means : means_) {
            means->takeOver();
        }
    }

  private:
    const std::vector<std::shared_ptr<HotKeyMeans>> means_;
};

class CombinedTyping final : public TypingMeans {
  public:
    explicit CombinedTyping(std::vector<std::shared_ptr<TypingMeans>> means)
        : means_(std::move(means)) {}

    bool isAvailable() const override { return current().isAvailable(); }
    bool servesXPrograms() const override {
        return isAvailable() ? current().servesXPrograms()
                             : std::ranges::all_of(means_, &TypingMeans::servesXPrograms);
    }
    void type(TypedText text, std::function<void()> onDone) override {
        current().type(std::move(text), std::move(onDone));
    }

  private:
    // Without one that is available, any of them reports a text lost.
    TypingMeans& current() const {
        const auto found =
            std::ranges::find_if(means_, [](const auto& means) { return means->isAvailable(); });
        return found != means_.end() ? **found : *means_.back();
    }

    const std::vector<std::shared_ptr<TypingMeans>> means_;
};

class CombinedFront final : public FrontMeans {
  public:
    explicit CombinedFront(std::vector<std::shared_ptr<FrontMeans>> means)
        : means_(std::move(means)) {}

    std::optional<platform::ProcessIdentifier> frontmostProcess() const override {
        for (const auto& means : means_) {
            if (const auto process = means->frontmostProcess()) {
                return process;
            }
        }
        return std::nullopt;
    }
    std::optional<platform::ProcessIdentifier> chooseTarget() override {
        for (const auto& means : means_) {
            if (const auto process = means->chooseTarget()) {
                return process;
            }
        }
        return std::nullopt;
    }

    bool isElsewhere(platform::ProcessIdentifier process) const override {
        return std::ranges::any_of(
            means_, [process](const auto& means) { return means->isElsewhere(process); });
    }
    bool followsReports() const override {
        return std::ranges::any_of(means_, &FrontMeans::followsReports);
    }

  private:
    const std::vector<std::shared_ptr<FrontMeans>> means_;
};

}  // namespace

std::shared_ptr<HotKeyMeans> combined(std::vector<std::shared_ptr<HotKeyMeans>> means) {
    return std::make_shared<CombinedHotKeys>(std::move(means));
}

std::shared_ptr<TypingMeans> combined(std::vector<std::shared_ptr<TypingMeans>> means) {
    return std::make_shared<CombinedTyping>(std::move(means));
}

std::shared_ptr<FrontMeans> combined(std::vector<std::shared_ptr<FrontMeans>> means) {
    return std::make_shared<CombinedFront>(std::move(means));
}

}  // namespace tarvik::linuxdesktop
