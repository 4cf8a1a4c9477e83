// SPDX-License-Identifier: MIT

#include <optional>

#include "platform/linux/DesktopInput.h"
#include "tests/conformance/input/InputConformance.h"
#include "tests/linux/sway/SwayUser.h"
#include "tests/linux/x11/X11Target.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

class SwayInputWorld final : public InputWorld {
  public:
    platform::EventManager& eventManager() override { return input_.eventManager(); }
    platform::KeyboardEvents& keyboardEvents() override { return input_.keyboardEvents(); }

    std::optional<platform::ProcessIdentifier> frontmostProcess() override {
        return input_.frontmostProcess();
    }

    bool runUntil(const std::function<bool()>& condition) override {
        return mainQueue_.runUntil(condition);
    }
    void settle() override { mainQueue_.runFor(150ms); }

    void press(std::uint32_t modifiers) override {
        if ((modifiers & platform::optionKeyMask) != 0) {
            user_.press(SwayUser::altKey);
        }
        if ((modifiers & platform::shiftKeyMask) != 0) {
            user_.press(SwayUser::shiftKey);
        }
        user_.press(SwayUser::spaceKey);
    }
    void release(std::uint32_t modifiers) override {
        user_.release(SwayUser::spaceKey);
        if ((modifiers & platform::shiftKeyMask) != 0) {
            user_.release(SwayUser::shiftKey);
        }
        if ((modifiers & platform::optionKeyMask) != 0) {
            user_.release(SwayUser::altKey);
        }
    }
    void take(std::uint32_t modifiers) override {
        const bool hasAlt = (modifiers & platform::optionKeyMask) != 0;
        const bool hasShift = (modifiers & platform::shiftKeyMask) != 0;
        user_.configure(std::string("bindsym ") + (hasAlt ? "Alt+" : "") +
                        (hasShift ? "Shift+" : "") + "space nop");
    }

    void startPrograms() override {
        first_.emplace(X11Target::Kind::gtk3Entry, mainQueue_);
        second_.emplace(X11Target::Kind::gtk3Entry, mainQueue_);
    }
    platform::ProcessIdentifier processOf(Program program) override {
        return program == Program::first ? first_->process() : second_->process();
    }
    void endSecondProgram() override { second_->end(); }
    platform::ProcessIdentifier endedProcess() override {
        TestProcess process({"true"});
        const auto identifier = process.identifier();
        process.kill();
        return identifier;
    }
    std::string textOf(Program program) override {
        return program == Program::first ? first_->text() : second_->text();
    }

  private:
    RealTimeQueue mainQueue_;
    RecordingLog log_;
    SwayUser user_;
    linuxdesktop::DesktopInput input_{mainQueue_, log_};
    std::optional<X11Target> first_;
    std::optional<X11Target> second_;
};

}  // namespace

std::vector<NamedInputWorld> realInputWorlds() {
    return {{"Sway",
             []() -> std::unique_ptr<InputWorld> { return std::make_unique<SwayInputWorld>(); }}};
}

}  // namespace tarvik::tests
