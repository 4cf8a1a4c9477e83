// SPDX-License-Identifier: MIT

#include <chrono>

#include "tests/linux/gnome/ShortcutHoldTest.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

TEST_F(ShortcutHoldTest, ATapEndsHalfASecondAfterItsKeyWouldHaveRepeated) {
    press();
    EXPECT_EQ(eventsAfter(999ms), "P1");
    EXPECT_EQ(eventsAfter(1ms), "P1R1");
    EXPECT_EQ(engine.users, 0);
}

TEST_F(ShortcutHoldTest, AHoldEndsWithItsRepeats) {
    press();
    pressAfter(500ms);
    for (int i = 0; i < 100; ++i) {
        pressAfter(30ms);
    }
    EXPECT_EQ(eventsAfter(269ms), "P1");
    EXPECT_EQ(eventsAfter(1ms), "P1R1");
}

// GNOME ends the repeats when any other key goes down or up.
TEST_F(ShortcutHoldTest, ShiftInTheMiddleEndsNoHoldInAField) {
    engine.isInField = true;
    for (const auto shiftTime : {20ms, 300ms, 500ms, 530ms, 2000ms}) {
        events.clear();
        press();
        for (auto time = 500ms; time < shiftTime; time += 30ms) {
            pressAfter(time == 500ms ? 500ms : 30ms);
        }
        loop.runFor(20ms);
        shortcut.handleKey({shiftKey, false, true});
        EXPECT_EQ(eventsAfter(10s), "P1") << shiftTime.count();
        shortcut.handleKey({shiftKey, true, true});
        EXPECT_EQ(eventsAfter(10s), "P1") << shiftTime.count();
        shortcut.handleKey({spaceKey, true, true});
        EXPECT_EQ(events, "P1R1");
        EXPECT_EQ(eventsAfter(5s), "P1R1") << shiftTime.count();
    }
}

TEST_F(ShortcutHoldTest, ShiftThatIsDownAtTheReleaseEndsTheHoldWithIt) {
    engine.isInField = true;
    for (const auto first : {spaceKey, altKey}) {
        events.clear();
        press();
        loop.runFor(300ms);
        shortcut.handleKey({shiftKey, false, true});
        loop.runFor(3s);
        shortcut.handleKey({first, true, true});
        EXPECT_EQ(events, "P1R1");
        EXPECT_EQ(eventsAfter(5s), "P1R1");
    }
}

// Nobody sees the release then.
TEST_F(ShortcutHoldTest, ShiftInTheMiddleEndsAHoldWithoutAFieldAsTheReleaseWould) {
    press();
    pressAfter(500ms);
    pressAfter(30ms);
    EXPECT_EQ(eventsAfter(269ms), "P1");
    EXPECT_EQ(eventsAfter(1ms), "P1R1");
}

// GNOME may hold the repeats back on a busy machine, and ends them when any other key goes down.
TEST_F(ShortcutHoldTest, AHoldInAnXProgramEndsWithItsKeysAlone) {
    press();
    ASSERT_TRUE(holdNumber);
    const std::uint64_t number = *holdNumber;
    shortcut.handleKeysSeenInX(number, true);
    EXPECT_EQ(eventsAfter(20s), "P1");
    for (int i = 0; i < 10; ++i) {
        pressAfter(30ms);
    }
    EXPECT_EQ(eventsAfter(20s), "P1");
    shortcut.handleReleaseInX(number);
    EXPECT_EQ(events, "P1R1");
    EXPECT_FALSE(holdNumber);
    EXPECT_EQ(engine.users, 0);
}

TEST_F(ShortcutHoldTest, ARepeatThatComesAfterTheReleaseInAnXProgramIsNoPress) {
    press();
    shortcut.handleKeysSeenInX(*holdNumber, true);
    pressAfter(500ms);
    for (int i = 0; i < 10; ++i) {
        pressAfter(30ms);
    }
    shortcut.handleReleaseInX(*holdNumber);
    EXPECT_EQ(events, "P1R1");
    pressAfter(30ms);
    pressAfter(100ms);
    EXPECT_EQ(eventsAfter(1s), "P1R1");
    press();
    EXPECT_EQ(events, "P1R1P1");
}

// The keys of the first tap went up before the X server was looked at.
TEST_F(ShortcutHoldTest, AReleaseInAnXProgramEndsTheSecondTapThatItFollows) {
    press(2);
    const std::uint64_t number = *holdNumber;
    pressAfter(800ms, 2);
    EXPECT_EQ(events, "P2");
    shortcut.handleReleaseInX(number);
    EXPECT_EQ(events, "P2R2P2R2");
    EXPECT_FALSE(holdNumber);
    EXPECT_EQ(eventsAfter(5s), "P2R2P2R2");
}

// GNOME starts its command late.
TEST_F(ShortcutHoldTest, ATapIsHeardThatWasReleasedInAnXProgramBeforeItsReport) {
    press(2);
    loop.runFor(800ms);
    shortcut.handleReleaseInX(*holdNumber);
    EXPECT_EQ(events, "P2R2");
    pressLate(100ms, 2);
    EXPECT_EQ(events, "P2R2P2");
    EXPECT_EQ(eventsAfter(1s), "P2R2P2R2");
}

// The keys have been down all along.
TEST_F(ShortcutHoldTest, AnUnclearReportOfAHoldThatIsSeenInAnXProgramIsItsRepeat) {
    press();
    shortcut.handleKeysSeenInX(*holdNumber, true);
    pressAfter(800ms);
    shortcut.handleReleaseInX(*holdNumber);
    EXPECT_EQ(eventsAfter(5s), "P1R1");
}

// The user has turned to a program that nobody sees the keys in.
TEST_F(ShortcutHoldTest, AHoldThatLeavesTheXProgramEndsWithItsRepeats) {
    press();
    const std::uint64_t number = *holdNumber;
    shortcut.handleKeysSeenInX(number, true);
    pressAfter(500ms);
    pressAfter(30ms);
    loop.runFor(10s);
    shortcut.handleKeysSeenInX(number, false);
    EXPECT_EQ(eventsAfter(269ms), "P1");
    EXPECT_EQ(eventsAfter(1ms), "P1R1");
}

// It comes from another thread.
TEST_F(ShortcutHoldTest, WhatIsToldOfAnEarlierHoldInAnXProgramCountsForNoLaterOne) {
    press();
    const std::uint64_t earlier = *holdNumber;
    EXPECT_EQ(eventsAfter(2s), "P1R1");
    press();
    ASSERT_NE(holdNumber, earlier);
    shortcut.handleReleaseInX(earlier);
    shortcut.handleKeysSeenInX(earlier, true);
    EXPECT_EQ(events, "P1R1P1");
    EXPECT_EQ(eventsAfter(2s), "P1R1P1R1");
}

// Of a busy machine.
TEST_F(ShortcutHoldTest, RepeatsThatComeLateAndTogetherAreOneHold) {
    press();
    pressAfter(800ms);
    for (int i = 0; i < 20; ++i) {
        pressAfter(i % 5 == 0 ? 200ms : 0ms);
    }
    EXPECT_EQ(events, "P1");
    EXPECT_EQ(eventsAfter(600ms), "P1R1");
}

TEST_F(ShortcutHoldTest, ALoneRepeatIsOfAHoldThatEndedRightAfter) {
    for (const auto jitter : {-40ms, 0ms, 40ms}) {
        events.clear();
        press();
        pressAfter(500ms + jitter);
        EXPECT_EQ(eventsAfter(1s), "P1R1");
    }
}

TEST_F(ShortcutHoldTest, ASecondPressWhoseReleaseNobodySawIsHeard) {
    for (const auto gap : {140ms, 299ms, 300ms, 400ms, 459ms, 541ms, 700ms, 999ms, 1001ms}) {
        events.clear();
        press(2);
        pressAfter(gap, 2);
        const auto pressTime = loop.now();
        loop.runFor(220ms);
        EXPECT_TRUE(events == "P2R2P2") << gap.count() << ": " << events;
        EXPECT_LE(eventTime - pressTime, 220ms);
        loop.runFor(2s);
        EXPECT_EQ(events, "P2R2P2R2") << gap.count();
    }
}

TEST_F(ShortcutHoldTest, ASecondPressThatIsHeldHasRepeatsOfItsOwn) {
    press();
    pressAfter(400ms);
    pressAfter(500ms);
    pressAfter(30ms);
    EXPECT_EQ(events, "P1R1P1");
    EXPECT_EQ(eventsAfter(1s), "P1R1P1R1");
}

// A busy machine may report no press.
TEST_F(ShortcutHoldTest, RepeatsWithoutTheirPressAreOneHold) {
    press();
    for (int i = 0; i < 40; ++i) {
        pressAfter(34ms);
    }
    EXPECT_EQ(eventsAfter(1s), "P1R1");
}

// The deadline of the second one is late.
TEST_F(ShortcutHoldTest, PressesThatAreReportedTogetherAreHeardOneByOne) {
    const auto start = loop.now();
    press(2);
    loop.runFor(100ms);
    shortcut.handlePress(2, modifiersOf(2), start + 400ms);
    shortcut.handlePress(2, modifiersOf(2), start + 800ms);
    EXPECT_EQ(events, "P2R2P2");
    EXPECT_EQ(eventsAfter(1s), "P2R2P2R2P2");
}

TEST_F(ShortcutHoldTest, AnotherHotkeyEndsTheHold) {
    press();
    pressAfter(400ms);
    press(2);
    EXPECT_EQ(eventsAfter(300ms), "P1R1P2");
}

TEST_F(ShortcutHoldTest, AKeyboardWithoutRepeatsIsHeardAtEachPress) {
    repetition.reset();
    press();
    EXPECT_EQ(eventsAfter(1min), "P1");
    press();
    EXPECT_EQ(events, "P1R1P1");
}

TEST_F(ShortcutHoldTest, ACancelledHoldHasNoRelease) {
    press();
    pressAfter(400ms);
    shortcut.cancel(2);
    EXPECT_EQ(engine.users, 1);
    shortcut.cancel(1);
    EXPECT_EQ(eventsAfter(5s), "P1");
    EXPECT_EQ(engine.users, 0);
}

TEST_F(ShortcutHoldTest, ATapInAFieldIsHeardAgainAtOnce) {
    engine.isInField = true;
    for (int i = 0; i < 3; ++i) {
        press(2);
        loop.runFor(80ms);
        shortcut.handleKey({spaceKey, true, true});
        loop.runFor(70ms);
    }
    EXPECT_EQ(events, "P2R2P2R2P2R2");
    EXPECT_EQ(engine.taps, 3);
}

}  // namespace

}  // namespace tarvik::tests
