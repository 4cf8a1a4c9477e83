// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/linux/DesktopInput.h"
#include "platform/linux/accessibility/AccessibilityWorker.h"
#include "tests/conformance/input/InputWorld.h"
#include "tests/linux/x11/X11Target.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// The input of a Linux session, with real programs. `User` presses the keys of the session's
/// keyboard.
template <typename User>
class LinuxInputWorld : public InputWorld {
  public:
    platform::EventManager& eventManager() override { return input_.eventManager(); }
    platform::KeyboardEvents& keyboardEvents() override { return input_.keyboardEvents(); }

    std::optional<platform::ProcessIdentifier> frontmostProcess() override {
        return input_.frontmostProcess();
    }

    bool runUntil(const std::function<bool()>& condition) override {
        return mainQueue_.runUntil(condition);
    }
    void settle() override { mainQueue_.runFor(std::chrono::milliseconds(150)); }

    void press(std::uint32_t modifiers) override {
        if ((modifiers & platform::optionKeyMask) != 0) {
            user_.press(User::altKey);
        }
        if ((modifiers & platform::shiftKeyMask) != 0) {
            user_.press(User::shiftKey);
        }
        user_.press(User::spaceKey);
    }
    void release(std::uint32_t modifiers) override {
        user_.release(User::spaceKey);
        if ((modifiers & platform::shiftKeyMask) != 0) {
            user_.release(User::shiftKey);
        }
        if ((modifiers & platform::optionKeyMask) != 0) {
            user_.release(User::altKey);
        }
    }

    void startPrograms() override {
        first_.emplace(X11Target::Kind::gtk3Entry, mainQueue_);
        beginRecording(first_->process());
        second_.emplace(X11Target::Kind::gtk3Entry, mainQueue_);
        beginRecording(second_->process());
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
    std::string logText() override {
        std::string text;
        for (const std::string& line : log_.lines()) {
            text += line + "\n";
        }
        return text;
    }

  protected:
    explicit LinuxInputWorld(
        const std::shared_ptr<linuxdesktop::AccessibilityWorker>& worker = nullptr)
        : input_(mainQueue_, log_,
                 worker ? std::shared_ptr<const linuxdesktop::AccessibilityState>(worker,
                                                                                  &worker->state())
                        : nullptr) {}

    RealTimeQueue mainQueue_;
    RecordingLog log_;
    User user_;

  private:
    // As a recording does, with the program in front.
    void beginRecording(platform::ProcessIdentifier process) {
        EXPECT_TRUE(runUntil([&] { return input_.chooseTarget() == process; }));
    }

    linuxdesktop::DesktopInput input_;
    std::optional<X11Target> first_;
    std::optional<X11Target> second_;
};

}  // namespace tarvik::tests
