// SPDX-License-Identifier: MIT

#include <cstdint>
#include <optional>
#include <string>

#include "tests/linux/x11/X11SessionWindowTest.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

/// A window that has the keyboard, and another means that has heard a hotkey.
class X11HoldFollower : public X11SessionWithWindow {
  protected:
    X11HoldFollower() {
        other->selectEvents(window, XCB_EVENT_MASK_KEY_PRESS);
        focus(window);
        following.emplace(
            *ownConnection, loop, log, linuxdesktop::HotKeys::Events{}, linuxdesktop::OnLift{},
            front, linuxdesktop::Typist::keyboardTimeout,
            linuxdesktop::Compositor{
                nullptr,
                {[this](std::uint64_t hold, bool areSeen) {
                     told += (areSeen ? "seen" : "unseen") + std::to_string(hold) + " ";
                 },
                 [this](std::uint64_t hold) { told += "up" + std::to_string(hold) + " "; }}});
    }
    void drain() override {
        session.drain();
        if (following) {
            following->drain();
        }
    }
    void follow(std::optional<std::uint64_t> hold) { following->holds().follow(hold); }
    void holdKeys() {
        user.press(X11User::altKey);
        user.press(X11User::spaceKey);
    }
    /// What has been told within twice the time that a release is confirmed in.
    std::string toldByNow() {
        const auto end =
            std::chrono::steady_clock::now() + 2 * linuxdesktop::HoldFollower::confirmationDelay;
        runUntil([end] { return std::chrono::steady_clock::now() >= end; }, 10s);
        return told;
    }

    std::unique_ptr<linuxdesktop::XcbConnection> ownConnection =
        linuxdesktop::XcbConnection::open().value();
    std::string told;
    std::optional<linuxdesktop::X11Session> following;
};

TEST_F(X11HoldFollower, TellsOfTheFirstKeyThatGoesUp) {
    for (const std::uint8_t first : {X11User::altKey, X11User::spaceKey}) {
        told.clear();
        holdKeys();
        follow(1);
        EXPECT_EQ(told, "seen1 ");
        user.tap(X11User::qKey);
        EXPECT_EQ(toldByNow(), "seen1 ");
        user.release(first);
        EXPECT_TRUE(runUntil([this] { return told == "seen1 up1 "; }, 5s)) << told;
        follow(std::nullopt);
        user.release(first == X11User::altKey ? X11User::spaceKey : X11User::altKey);
        EXPECT_EQ(toldByNow(), "seen1 up1 ");
    }
}

TEST_F(X11HoldFollower, HearsNoKeyWithoutAHold) {
    holdKeys();
    follow(1);
    EXPECT_TRUE(hearsOfEveryKey(*ownConnection));
    follow(std::nullopt);
    EXPECT_FALSE(hearsOfEveryKey(*ownConnection));
    user.release(X11User::spaceKey);
    EXPECT_EQ(toldByNow(), "seen1 ");
}

// A compositor reports every key as released for a keyboard that goes elsewhere.
TEST_F(X11HoldFollower, TellsOfNoReleaseWhenNoXProgramHasTheKeyboardAnyMore) {
    holdKeys();
    follow(1);
    focus(XCB_INPUT_FOCUS_NONE);
    user.release(X11User::altKey);
    EXPECT_TRUE(runUntil([this] { return told == "seen1 unseen1 "; }, 5s)) << told;
    EXPECT_EQ(toldByNow(), "seen1 unseen1 ");
}

TEST_F(X11HoldFollower, SeesNothingWithoutAnXProgramInFront) {
    focus(XCB_INPUT_FOCUS_NONE);
    holdKeys();
    follow(1);
    EXPECT_EQ(toldByNow(), "");
}

// Alt went up before anybody looked.
TEST_F(X11HoldFollower, PromisesNoReleaseOfKeysThatAreUp) {
    follow(1);
    EXPECT_EQ(toldByNow(), "");
}

// The space bar is up for the X server, since the compositor has kept the press of it to itself.
TEST_F(X11HoldFollower, TakesNoTypedBlankForTheRelease) {
    user.press(X11User::altKey);
    follow(1);
    bool isTyped = false;
    following->typist().type({getpid(), U"a b"}, XCB_NONE, [&] { isTyped = true; });
    EXPECT_TRUE(runUntil([&] { return isTyped; }, 15s));
    // Alt, the key that accompanies Alt, and three characters.
    EXPECT_EQ(keysThatArrived(), 5U);
    EXPECT_EQ(toldByNow(), "seen1 ");
    user.release(X11User::altKey);
    EXPECT_TRUE(runUntil([this] { return told == "seen1 up1 "; }, 5s)) << told;
}

TEST_F(X11HoldFollower, SeesNothingMoreAtTheEnd) {
    holdKeys();
    follow(1);
    following.reset();
    EXPECT_EQ(told, "seen1 unseen1 ");
}

}  // namespace

}  // namespace tarvik::tests
