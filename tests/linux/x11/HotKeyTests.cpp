// SPDX-License-Identifier: MIT

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>

#include "tests/linux/x11/InputFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using platform::noErr;

class X11HotKeys : public InputFixture, public testing::TestWithParam<X11User::Device> {
  protected:
    // The first key of another keyboard changes the map once.
    X11HotKeys() {
        user.emplace(GetParam());
        user->tap(X11User::shiftKey);
        EXPECT_TRUE(waitForWindowManager(mainQueue));
    }

    HotKeyRecorder recorder{input->eventManager()};

    void addBoth() {
        ASSERT_EQ(recorder.add(hold, 1), noErr);
        ASSERT_EQ(recorder.add(toggle, 2), noErr);
    }
};

TEST_P(X11HotKeys, EndAtTheFirstKeyThatGoesUp) {
    addBoth();
    pressHold();
    EXPECT_TRUE(becomes(recorder, "P1"));
    user->release(X11User::altKey);
    EXPECT_TRUE(becomes(recorder, "P1R1"));
    user->release(X11User::spaceKey);
    mainQueue.runFor(50ms);
    EXPECT_TRUE(becomes(recorder, "P1R1"));
}

TEST_P(X11HotKeys, EndOnceWhicheverKeyOfThreeGoesUpFirst) {
    addBoth();
    std::string expected;
    for (const auto first : {X11User::altKey, X11User::shiftKey, X11User::spaceKey}) {
        user->press(X11User::shiftKey);
        pressHold();
        user->release(first);
        expected += "P2R2";
        EXPECT_TRUE(becomes(recorder, expected));
        for (const auto key : {X11User::altKey, X11User::shiftKey, X11User::spaceKey}) {
            if (key != first) {
                user->release(key);
            }
        }
    }
    mainQueue.runFor(50ms);
    EXPECT_TRUE(becomes(recorder, expected));
}

// The application hears of the first release when the modifier is down again.
TEST_P(X11HotKeys, LeaveAModifierDownThatIsPressedAgainAtOnce) {
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    user->grabServer();
    pressHold();
    user->release(X11User::altKey);
    user->release(X11User::spaceKey);
    user->press(X11User::altKey);
    user->releaseServer();
    EXPECT_TRUE(becomes(recorder, "P1R1"));
    // The answer comes when all keys so far have been handled.
    ASSERT_EQ(recorder.add(toggle, 2), noErr);
    EXPECT_TRUE(user->isDown(X11User::altKey));
    user->press(X11User::spaceKey);
    EXPECT_TRUE(becomes(recorder, "P1R1P1"));
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1P1R1"));
}

TEST_P(X11HotKeys, TellTheEndOfAHoldWhenAnotherHotkeyIsUnregisteredMeanwhile) {
    platform::EventHotKeyRef other = nullptr;
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    ASSERT_EQ(recorder.add(toggle, 2, &other), noErr);
    pressHold();
    EXPECT_TRUE(becomes(recorder, "P1"));
    EXPECT_EQ(recorder.remove(other), noErr);
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1"));
}

TEST_P(X11HotKeys, ReportAKeyThatIsHeldOnce) {
    addBoth();
    pressHold();
    // The server repeats a key after 660 ms.
    mainQueue.runFor(1000ms);
    EXPECT_EQ(recorder.events, "P1");
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1"));
}

TEST_P(X11HotKeys, TypeNoSpaceWhenAltGoesUpFirst) {
    addBoth();
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    pressHold();
    EXPECT_TRUE(becomes(recorder, "P1"));
    user->release(X11User::altKey);
    mainQueue.runFor(1000ms);
    user->release(X11User::spaceKey);
    type("x", target.process());
    EXPECT_TRUE(becomes(target, "x"));
}

TEST_P(X11HotKeys, WorkWhileLockKeysAreOn) {
    addBoth();
    std::string expected;
    for (const int locks :
         {int{XCB_MOD_MASK_LOCK}, int{XCB_MOD_MASK_2}, XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2}) {
        user->lock(static_cast<std::uint8_t>(locks));
        pressHold();
        releaseHold();
        expected += "P1R1";
        EXPECT_TRUE(becomes(recorder, expected));
    }
}

TEST_P(X11HotKeys, ComeBeforeAWindowManagerThatGrabsAgain) {
    addBoth();
    X11User manager;
    std::string expected;
    for (const std::string layout : {"de", "us", "fr"}) {
        setLayout({layout});
        EXPECT_TRUE(waitForWindowManager(mainQueue));
        manager.grabAsManager(X11User::spaceKey, XCB_MOD_MASK_1);
        // This one does not tell when it has grabbed, and is overtaken by then at the latest.
        mainQueue.runFor(650ms);
        pressHold();
        releaseHold();
        expected += "P1R1";
        EXPECT_TRUE(becomes(recorder, expected));
    }
    EXPECT_EQ(manager.grabbedPresses(), 0);
}

TEST_P(X11HotKeys, KeepAHoldWhileTheLayoutChanges) {
    addBoth();
    pressHold();
    EXPECT_TRUE(becomes(recorder, "P1"));
    setLayout({"us,ru", "-option", "grp:menu_toggle"});
    mainQueue.runFor(300ms);
    EXPECT_EQ(recorder.events, "P1");
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1"));
    pressHold();
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1P1R1"));
}

TEST_P(X11HotKeys, WorkAfterTyping) {
    addBoth();
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    const int spare = user->keysWithoutSymbol();
    std::string text;
    std::string expected;
    for (int i = 0; i < 3; ++i) {
        pressHold();
        expected += "P1";
        EXPECT_TRUE(becomes(recorder, expected));
        releaseHold();
        expected += "R1";
        EXPECT_TRUE(becomes(recorder, expected));
        type("Ż日", target.process());
        text += "Ż日";
        EXPECT_TRUE(becomes(target, text));
        // The map changes once more when the remapped keys are restored.
        EXPECT_TRUE(mainQueue.runUntil([&] { return user->keysWithoutSymbol() == spare; }));
        mainQueue.runFor(650ms);
    }
}

// Typing lifts Alt, and to the server it stays up however long the user holds it.
TEST_P(X11HotKeys, WorkAgainWhileAltIsHeldOverTyping) {
    addBoth();
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    user->press(X11User::altKey);
    std::string events;
    std::string text;
    for (const bool isTypedInTheHold : {true, false, true}) {
        user->press(X11User::spaceKey);
        events += "P1";
        EXPECT_TRUE(becomes(recorder, events));
        if (!isTypedInTheHold) {
            user->release(X11User::spaceKey);
            EXPECT_TRUE(becomes(recorder, events + "R1"));
        }
        type("A b", target.process());
        text += "A b";
        EXPECT_TRUE(becomes(target, text));
        EXPECT_FALSE(user->isDown(X11User::altKey));
        if (isTypedInTheHold) {
            user->release(X11User::spaceKey);
        }
        events += "R1";
        EXPECT_TRUE(becomes(recorder, events));
    }
    user->press(X11User::shiftKey);
    user->tap(X11User::spaceKey);
    user->release(X11User::shiftKey);
    EXPECT_TRUE(becomes(recorder, events + "P2R2"));
    user->press(X11User::spaceKey);
    EXPECT_TRUE(becomes(recorder, events + "P2R2P1"));
    user->release(X11User::altKey);
    EXPECT_TRUE(becomes(recorder, events + "P2R2P1R1"));
    user->release(X11User::spaceKey);
    EXPECT_TRUE(becomes(target, text));
}

TEST_P(X11HotKeys, LeaveTheSpaceBarAloneAsSoonAsAltGoesUpAfterTyping) {
    addBoth();
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    std::string events;
    std::string text;
    for (int i = 0; i < 10; ++i) {
        pressHold();
        events += "P1";
        ASSERT_TRUE(becomes(recorder, events));
        type("x", target.process());
        text += "x";
        ASSERT_TRUE(becomes(target, text));
        user->release(X11User::spaceKey);
        // Nobody is fast enough to drop a grab in between.
        user->release(X11User::altKey);
        user->tap(X11User::spaceKey);
        events += "R1";
        text += " ";
        ASSERT_TRUE(becomes(target, text));
        ASSERT_TRUE(becomes(recorder, events));
        user->tap(X11User::spaceKey);
        text += " ";
        ASSERT_TRUE(becomes(target, text));
    }
    EXPECT_EQ(recorder.events, events);
}

TEST_P(X11HotKeys, AreFreeForOthersAfterUnregistering) {
    platform::EventHotKeyRef hotKey = nullptr;
    ASSERT_EQ(recorder.add(hold, 1, &hotKey), noErr);
    X11User other;
    EXPECT_FALSE(other.grabHotKey(X11User::spaceKey, XCB_MOD_MASK_1));
    input->eventManager().unregisterEventHotKey(hotKey);
    EXPECT_TRUE(other.grabHotKey(X11User::spaceKey, XCB_MOD_MASK_1));
}

TEST_P(X11HotKeys, LeaveNothingGrabbedWhenOneVariantIsTaken) {
    X11User other;
    ASSERT_TRUE(other.grabHotKey(X11User::spaceKey, XCB_MOD_MASK_1 | XCB_MOD_MASK_LOCK));
    EXPECT_EQ(recorder.add(hold, 1), platform::eventHotKeyExistsErr);
    EXPECT_TRUE(other.grabHotKey(X11User::spaceKey, XCB_MOD_MASK_1));
    EXPECT_TRUE(other.grabHotKey(X11User::spaceKey, XCB_MOD_MASK_1 | XCB_MOD_MASK_2));
}

TEST_P(X11HotKeys, LeaveNothingGrabbedWhenTheirKeyMovesToWhereOneVariantIsTaken) {
    addBoth();
    X11User other;
    ASSERT_TRUE(other.grabHotKey(X11User::pauseKey, XCB_MOD_MASK_1 | XCB_MOD_MASK_LOCK));
    user->setSymbol(X11User::pauseKey, XKB_KEY_space);
    user->setSymbol(X11User::spaceKey, XKB_KEY_Pause);
    EXPECT_TRUE(mainQueue.runUntil([&] {
        return log.hasLineWith("TarvikDictate: a hotkey is lost: another program has taken it");
    }));
    // The last of the tries to get it back.
    mainQueue.runFor(650ms);
    EXPECT_EQ(std::ranges::count_if(log.lines(),
                                    [](const std::string& line) {
                                        return line.find("a hotkey is lost") != std::string::npos;
                                    }),
              1);
    EXPECT_TRUE(other.grabHotKey(X11User::pauseKey, XCB_MOD_MASK_1));
    EXPECT_TRUE(other.grabHotKey(X11User::pauseKey, XCB_MOD_MASK_1 | XCB_MOD_MASK_2));
    user->press(X11User::shiftKey);
    user->press(X11User::altKey);
    user->tap(X11User::pauseKey);
    EXPECT_TRUE(becomes(recorder, "P2R2"));
}

TEST_P(X11HotKeys, RefuseWhatTheyCannotGrab) {
    platform::EventHotKeyRef hotKey = nullptr;
    auto& manager = input->eventManager();
    auto* target = manager.applicationEventTarget();
    EXPECT_EQ(manager.registerEventHotKey(50, hold, {}, target, 0, &hotKey),
              platform::eventHotKeyInvalidErr);
    EXPECT_EQ(manager.registerEventHotKey(platform::spaceKeyCode, 0x0100, {}, target, 0, &hotKey),
              platform::eventHotKeyInvalidErr);
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    EXPECT_EQ(recorder.add(hold, 3), platform::eventHotKeyExistsErr);
}

INSTANTIATE_TEST_SUITE_P(, X11HotKeys,
                         testing::Values(X11User::Device::hardware, X11User::Device::synthetic),
                         [](const auto& device) {
                             return device.param == X11User::Device::hardware ? "Hardware"
                                                                              : "Synthetic";
                         });

}  // namespace

}  // namespace tarvik::tests
