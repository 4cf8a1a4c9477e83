// SPDX-License-Identifier: MIT

#include <optional>

#include "platform/linux/DesktopInput.h"
#include "tests/conformance/input/InputConformance.h"
#include "tests/linux/x11/WindowManager.h"
#include "tests/linux/x11/X11Target.h"
#include "tests/linux/x11/X11User.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

class X11InputWorld final : public InputWorld {
  public:
    // The first key of another keyboard changes the map once, and the window manager takes its keys
    // back.
    X11InputWorld() {
        user_.tap(X11User::shiftKey);
        waitForWindowManager(mainQueue_);
    }

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
            user_.press(X11User::altKey);
        }
        if ((modifiers & platform::shiftKeyMask) != 0) {
            user_.press(X11User::shiftKey);
        }
        user_.press(X11User::spaceKey);
    }
    void release(std::uint32_t modifiers) override {
        user_.release(X11User::spaceKey);
        if ((modifiers & platform::shiftKeyMask) != 0) {
            user_.release(X11User::shiftKey);
        }
        if ((modifiers & platform::optionKeyMask) != 0) {
            user_.release(X11User::altKey);
        }
    }
    void take(std::uint32_t modifiers) override {
        std::uint32_t mask = 0;
        mask |= (modifiers & platform::optionKeyMask) != 0 ? std::uint32_t{XCB_MOD_MASK_1} : 0U;
        mask |= (modifiers & platform::shiftKeyMask) != 0 ? std::uint32_t{XCB_MOD_MASK_SHIFT} : 0U;
        user_.grabHotKey(X11User::spaceKey, mask);
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
    X11User user_;
    linuxdesktop::DesktopInput input_{mainQueue_, log_};
    std::optional<X11Target> first_;
    std::optional<X11Target> second_;
};

}  // namespace

std::vector<NamedInputWorld> realInputWorlds() {
    return {
        {"X11", []() -> std::unique_ptr<InputWorld> { return std::make_unique<X11InputWorld>(); }}};
}

}  // namespace tarvik::tests
