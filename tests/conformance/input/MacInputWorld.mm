// SPDX-License-Identifier: MIT

#import <Foundation/Foundation.h>

#include <cstdlib>

#import "platform/macos/Strings.h"
#import "platform/macos/input/CarbonEventManager.h"
#import "platform/macos/input/QuartzKeyboardEvents.h"
#import "platform/macos/system/CocoaApplication.h"
#include "tests/conformance/input/InputConformance.h"
#import "tests/macos/MainRunLoop.h"

namespace tarvik::tests {

namespace {

/// The input of macOS as far as it needs no permission and nobody at the keyboard.
class MacInputWorld final : public InputWorld {
  public:
    platform::EventManager& eventManager() override { return eventManager_; }
    platform::KeyboardEvents& keyboardEvents() override { return keyboardEvents_; }

    bool runUntil(const std::function<bool()>& condition) override {
        return runMainLoopUntil(condition, Seconds(10));
    }
    void settle() override {
        runMainLoopUntil([] { return false; }, Seconds(0.15));
    }

    platform::ProcessIdentifier endedProcess() override {
        NSTask* task = [[NSTask alloc] init];
        task.executableURL = [NSURL fileURLWithPath:@"/usr/bin/true"];
        NSError* error = nil;
        if (![task launchAndReturnError:&error]) {
            ADD_FAILURE() << macdesktop::errorFrom(error).localizedDescription;
            return 0;
        }
        [task waitUntilExit];
        return task.processIdentifier;
    }

    // The suites that would need these are left out: keys are pressed by a user, and typing into
    // programs needs the permission to control them.
    std::optional<platform::ProcessIdentifier> frontmostProcess() override { std::abort(); }
    void press(std::uint32_t) override { std::abort(); }
    void release(std::uint32_t) override { std::abort(); }
    void take(std::uint32_t) override { std::abort(); }
    void startPrograms() override { std::abort(); }
    platform::ProcessIdentifier processOf(Program) override { std::abort(); }
    void endSecondProgram() override { std::abort(); }
    std::string textOf(Program) override { std::abort(); }

  private:
    /// Connects to the window server, which has the hotkeys.
    macdesktop::CocoaApplication application_;
    macdesktop::CarbonEventManager eventManager_;
    macdesktop::QuartzKeyboardEvents keyboardEvents_;
};

}  // namespace

std::vector<NamedInputWorld> realInputWorlds() {
    return {{"Real",
             []() -> std::unique_ptr<InputWorld> { return std::make_unique<MacInputWorld>(); }}};
}

}  // namespace tarvik::tests
