// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "tests/linux/input/DesktopInputFixture.h"

namespace tarvik::tests {

/// The input of a session whose compositor ends and starts again. `User` is at the keyboard for a
/// part of the test only, since the keyboard ends with the compositor.
template <typename User>
class ReconnectionFixture : public DesktopInputFixture {
  protected:
    ReconnectionFixture() {
        openInput();
        recorder.emplace(input->eventManager());
    }

    void pressAndRelease() {
        User user;
        user.press(User::altKey);
        user.press(User::spaceKey);
        EXPECT_TRUE(becomes(*recorder, "P1", std::chrono::seconds(10)));
        user.release(User::spaceKey);
        user.release(User::altKey);
        EXPECT_TRUE(becomes(*recorder, "P1R1", std::chrono::seconds(10)));
        recorder->events.clear();
    }
    void typeAgain() {
        const User user;
        const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
        ASSERT_TRUE(comesToFront(target));
        type("again", target.process());
        EXPECT_TRUE(becomes(target, "again", std::chrono::seconds(10)));
    }

    std::optional<HotKeyRecorder> recorder;
};

}  // namespace tarvik::tests
