// SPDX-License-Identifier: MIT

#include <chrono>

#include "tests/linux/gnome/ShortcutHoldTest.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

// The user may hold Alt, and press the space bar again.
TEST_F(ShortcutHoldTest, ARepeatThatIsReportedSoonAfterTheSpaceBarWentUpIsNoPress) {
    engine.isInField = true;
    press();
    pressAfter(500ms);
    see(spaceKey, true);
    pressAfter(100ms);
    EXPECT_EQ(events, "P1R1");
    pressAfter(171ms);
    EXPECT_EQ(events, "P1R1P1");
}

// GNOME has reported the press itself late, so the hold seems too short for repeats.
TEST_F(ShortcutHoldTest, ARepeatOfAHoldThatSeemedShortIsNoPress) {
    engine.isInField = true;
    for (const auto delay : {10ms, 200ms, 500ms, 900ms}) {
        events.clear();
        press();
        loop.runFor(200ms);
        see(spaceKey, true);
        see(altKey, true);
        pressAfter(delay);
        EXPECT_EQ(eventsAfter(3s), "P1R1") << delay.count();
        EXPECT_EQ(engine.users, 0);
    }
}

TEST_F(ShortcutHoldTest, NoRepeatIsAPressHoweverLongTheyComeAfterTheKeysWentUp) {
    engine.isInField = true;
    press();
    pressAfter(500ms);
    see(altKey, true);
    see(spaceKey, true);
    for (int i = 0; i < 20; ++i) {
        pressAfter(i % 2 == 0 ? 300ms : 700ms);
    }
    EXPECT_EQ(eventsAfter(3s), "P1R1");
    EXPECT_EQ(engine.users, 0);
}

TEST_F(ShortcutHoldTest, AnotherPressOfAltIsOneOfTheHotkey) {
    engine.isInField = true;
    press();
    pressAfter(500ms);
    see(spaceKey, true);
    see(altKey, true);
    loop.runFor(300ms);
    shortcut.handleKey({altKey, false, false});
    pressAfter(8ms);
    EXPECT_EQ(events, "P1R1P1");
    see(altKey, true);
    EXPECT_EQ(events, "P1R1P1R1");
}

// Of a tap, both keys may go up before the engine has the field.
TEST_F(ShortcutHoldTest, ATapWhoseReleaseWasNotSeenEndsWithTheNextOne) {
    engine.isInField = true;
    for (int i = 0; i < 3; ++i) {
        press(2);
        loop.runFor(800ms);
        shortcut.handleKey({altKey, false, false});
        see(shiftKey, false);
        loop.runFor(8ms);
    }
    EXPECT_EQ(events, "P2R2P2R2P2R2");
    // The system tells of the beginning of a command to a hundredth of a second.
    pressLate(9ms, 2);
    EXPECT_EQ(events, "P2R2P2R2P2R2P2");
}

TEST_F(ShortcutHoldTest, ATapThatIsReportedAfterItsKeysWentUpIsHeard) {
    engine.isInField = true;
    press();
    pressAfter(500ms);
    see(altKey, true);
    see(spaceKey, true);
    loop.runFor(300ms);
    shortcut.handleKey({altKey, false, false});
    see(spaceKey, true);
    see(altKey, true);
    pressAfter(6ms);
    EXPECT_EQ(events, "P1R1P1");
}

TEST_F(ShortcutHoldTest, ASecondTapMayBeReportedBeforeItsAlt) {
    engine.isInField = true;
    for (const auto gap : {250ms, 400ms, 900ms}) {
        events.clear();
        press();
        pressAfter(gap);
        EXPECT_EQ(events, "P1") << gap.count();
        loop.runFor(10ms);
        shortcut.handleKey({altKey, false, false});
        EXPECT_EQ(events, "P1R1P1") << gap.count();
        shortcut.end();
    }
}

// The two ways from GNOME Shell differ in their time.
TEST_F(ShortcutHoldTest, APressMayBeReportedBeforeItsAlt) {
    engine.isInField = true;
    press();
    loop.runFor(100ms);
    see(altKey, true);
    pressAfter(100ms);
    EXPECT_EQ(eventsAfter(50ms), "P1R1");
    shortcut.handleKey({altKey, false, false});
    EXPECT_EQ(events, "P1R1P1");
    EXPECT_EQ(eventsAfter(200ms), "P1R1P1");
    see(spaceKey, true);
    EXPECT_EQ(events, "P1R1P1R1");
}

TEST_F(ShortcutHoldTest, ALateRepeatIsNotThePressOfAnAltMuchLater) {
    engine.isInField = true;
    press();
    loop.runFor(200ms);
    see(altKey, true);
    pressAfter(400ms);
    loop.runFor(201ms);
    shortcut.handleKey({altKey, false, false});
    EXPECT_EQ(eventsAfter(3s), "P1R1");
}

// Nobody sees Alt then.
TEST_F(ShortcutHoldTest, APressIsHeardWhenTheFieldIsLostAfterAHold) {
    engine.isInField = true;
    press();
    loop.runFor(100ms);
    see(altKey, true);
    engine.isInField = false;
    shortcut.handleField();
    pressAfter(100ms);
    EXPECT_EQ(events, "P1R1P1");
}

TEST_F(ShortcutHoldTest, AKeyboardWithoutRepeatsHasNoLateOnes) {
    engine.isInField = true;
    repetition.reset();
    press();
    loop.runFor(100ms);
    see(altKey, true);
    EXPECT_EQ(engine.users, 0);
    pressAfter(100ms);
    EXPECT_EQ(events, "P1R1P1");
}

TEST_F(ShortcutHoldTest, NothingIsWatchedAfterTheEnd) {
    engine.isInField = true;
    press();
    loop.runFor(100ms);
    see(altKey, true);
    EXPECT_EQ(engine.users, 1);
    shortcut.end();
    EXPECT_EQ(engine.users, 0);
    EXPECT_EQ(eventsAfter(3s), "P1R1");
}

// A busy machine may give the command no processor.
TEST_F(ShortcutHoldTest, ACommandFromBeforeTheEndIsNoPress) {
    press();
    pressAfter(500ms);
    pressAfter(30ms);
    EXPECT_EQ(eventsAfter(270ms), "P1R1");
    loop.runFor(100ms);
    pressLate(101ms);
    EXPECT_EQ(eventsAfter(3s), "P1R1");
    press();
    EXPECT_EQ(events, "P1R1P1");
}

TEST_F(ShortcutHoldTest, ACommandFromBeforeTheOtherHotkeyIsNoPress) {
    press();
    pressAfter(500ms);
    pressAfter(30ms);
    press(2);
    loop.runFor(50ms);
    pressLate(60ms);
    EXPECT_EQ(events, "P1R1P2");
}

TEST_F(ShortcutHoldTest, ACommandFromBeforeTheReleaseIsNoPressOfAShortHold) {
    engine.isInField = true;
    press();
    loop.runFor(200ms);
    see(spaceKey, true);
    loop.runFor(30ms);
    pressLate(31ms);
    EXPECT_EQ(events, "P1R1");
    press();
    EXPECT_EQ(events, "P1R1P1");
}

// Shift ends the repeats, and the only one comes at another time than the settings say.
TEST_F(ShortcutHoldTest, ALoneRepeatEndsNoHoldWhoseKeysAreSeen) {
    engine.isInField = true;
    for (const auto time : {200ms, 350ms, 720ms}) {
        events.clear();
        press();
        loop.runFor(50ms);
        see(shiftKey, false);
        pressAfter(time - 50ms);
        EXPECT_EQ(eventsAfter(5s), "P1") << time.count();
        see(spaceKey, true);
        see(altKey, true);
        EXPECT_EQ(eventsAfter(3s), "P1R1") << time.count();
    }
}

// Both keys may have gone up before.
TEST_F(ShortcutHoldTest, APressSoonAfterTheEngineHasGotTheFieldIsHeard) {
    press();
    loop.runFor(350ms);
    engine.isInField = true;
    shortcut.handleField();
    pressAfter(100ms);
    EXPECT_EQ(eventsAfter(220ms), "P1R1P1");
}

}  // namespace

}  // namespace tarvik::tests
