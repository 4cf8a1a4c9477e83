// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/EventManager.h"
#include "platform/linux/gnome/ShortcutHold.h"
#include "tests/linux/loop/VirtualLoop.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::FieldEngine;
using linuxdesktop::HotKeyNumber;
using linuxdesktop::KeyRepetition;
using linuxdesktop::ShortcutHold;
using linuxdesktop::SteadyTime;
using std::chrono::milliseconds;

constexpr auto hold = platform::optionKeyMask;
constexpr auto toggle = platform::optionKeyMask | platform::shiftKeyMask;
constexpr std::uint32_t altKey = 56;
constexpr std::uint32_t spaceKey = 57;
constexpr std::uint32_t shiftKey = 42;
constexpr std::uint32_t aKey = 30;
constexpr std::uint32_t controlKey = 29;

/// Has a field, or none, as the test says.
class FakeEngine final : public FieldEngine {
  public:
    void acquire() override { ++users; }
    void release() override { --users; }
    bool hasField() const override { return isInField && users > 0; }
    void tapControl() override { ++taps; }

    bool isInField = false;
    int users = 0;
    int taps = 0;
};

/// In virtual time, with GNOME's first settings of a keyboard.
class ShortcutHoldTest : public testing::Test {
  protected:
    void press(HotKeyNumber number = 1) {
        shortcut.handlePress(number, number == 1 ? hold : toggle, loop.now());
    }
    void pressAfter(milliseconds time, HotKeyNumber number = 1) {
        loop.runFor(time);
        press(number);
    }
    std::string eventsAfter(milliseconds time) {
        loop.runFor(time);
        return events;
    }
    /// A report of GNOME that comes `delay` after its time.
    void pressLate(milliseconds delay, HotKeyNumber number = 1) {
        shortcut.handlePress(number, number == 1 ? hold : toggle, loop.now() - delay);
    }
    void see(std::uint32_t key, bool isUp) { shortcut.handleKey({key, isUp, true}); }

    VirtualLoop loop;
    FakeEngine engine;
    std::optional<KeyRepetition> repetition = KeyRepetition{500ms, 30ms};
    std::string events;
    SteadyTime eventTime;
    ShortcutHold shortcut{engine,
                          loop,
                          {[this](HotKeyNumber number) { write("P", number); },
                           [this](HotKeyNumber number) { write("R", number); }},
                          [this] { return repetition; }};

  private:
    void write(const std::string& event, HotKeyNumber number) {
        events += event + std::to_string(number);
        eventTime = loop.now();
    }
};

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
    shortcut.handlePress(2, toggle, start + 400ms);
    shortcut.handlePress(2, toggle, start + 800ms);
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

/// A person at the keyboard of a GNOME that reports presses and repeats late, of which the engine
/// sees the keys while it has a field.
class RandomShortcutHolds : public ShortcutHoldTest {
  protected:
    void at(SteadyTime time, std::function<void()> action) {
        plan.emplace(time, std::move(action));
    }
    void run() {
        while (!plan.empty()) {
            const auto step = plan.begin();
            loop.runUntil(step->first);
            const auto action = std::move(step->second);
            plan.erase(step);
            action();
        }
    }
    int number(int limit) { return std::uniform_int_distribution(0, limit - 1)(random); }
    milliseconds latency() { return milliseconds(5 + number(maxLatency)); }

    /// GNOME runs one command after the other.
    void report(HotKeyNumber hotKey, SteadyTime time) {
        reportTime = std::max(reportTime, time + latency());
        at(reportTime, [this, hotKey] { press(hotKey); });
    }
    /// Reports the hotkey from its press until something else happens to the keyboard.
    void reportHeld(HotKeyNumber hotKey, SteadyTime from, SteadyTime until) {
        report(hotKey, from);
        for (auto time = from + repetition->delay; time < until; time += repetition->interval) {
            report(hotKey, time);
        }
    }
    void show(std::uint32_t key, bool isUp, SteadyTime time) {
        at(time + milliseconds(1 + number(20)), [this, key, isUp] {
            if (engine.hasField()) {
                shortcut.handleKey({key, isUp, true});
            }
        });
    }

    std::mt19937 random{1};
    std::multimap<SteadyTime, std::function<void()>> plan;
    SteadyTime reportTime;
    int maxLatency = 20;
};

TEST_F(RandomShortcutHolds, EachEndsInAFieldWithinItsTimeInWhicheverOrderKeysGoUp) {
    engine.isInField = true;
    SteadyTime::duration maxDelay{0};
    for (int i = 0; i < 1000; ++i) {
        events.clear();
        const SteadyTime start = loop.now();
        SteadyTime time = start;
        SteadyTime otherKeyTime = SteadyTime::max();
        std::vector<std::uint32_t> others{aKey, shiftKey, controlKey};
        std::ranges::shuffle(others, random);
        std::vector<std::uint32_t> down{altKey, spaceKey};
        for (int j = 0, count = number(3); j < count; ++j) {
            time += milliseconds(60 + number(600));
            const auto other = others[static_cast<std::size_t>(j)];
            otherKeyTime = std::min(otherKeyTime, time);
            show(other, false, time);
            if (number(2) == 0) {
                show(other, true, time + 20ms);
            } else {
                down.push_back(other);
            }
        }
        time += milliseconds(60 + number(900));
        std::ranges::shuffle(down, random);
        SteadyTime firstUp = SteadyTime::max();
        for (const auto key : down) {
            time += milliseconds(number(20));
            if (key == altKey || key == spaceKey) {
                firstUp = std::min(firstUp, time);
            }
            show(key, true, time);
        }
        // A key that goes down later repeats in the place of the space bar.
        reportHeld(1, start, std::min(firstUp, otherKeyTime));
        run();
        ASSERT_EQ(events, "P1R1") << i;
        maxDelay = std::max(maxDelay, eventTime - firstUp);
        loop.runFor(1s);
        ASSERT_EQ(events, "P1R1") << i;
    }
    EXPECT_LE(maxDelay, 300ms);
}

TEST_F(RandomShortcutHolds, EachEndsWithoutAFieldAndEachPressIsHeard) {
    for (maxLatency = 20; maxLatency <= 40; maxLatency += 20) {
        for (int i = 0; i < 1000; ++i) {
            events.clear();
            std::string expected;
            for (int j = 0; j < 5; ++j) {
                const SteadyTime start = loop.now();
                const SteadyTime end = start + milliseconds(40 + number(1500));
                reportHeld(2, start, end);
                run();
                expected += "P2R2";
                // A press at the very time of a first repeat looks like one.
                SteadyTime next = std::max(loop.now(), end) + milliseconds(320 + number(1500));
                if (next > start + 400ms && next < start + 600ms) {
                    next = start + 600ms;
                }
                loop.runUntil(next);
            }
            loop.runFor(2s);
            ASSERT_EQ(events, expected) << i;
        }
    }
}

// As with fifty times more programs than processors. GNOME has reported repeats a second late then.
TEST_F(RandomShortcutHolds, OnABusyMachineNoneBeginsAnotherInAField) {
    engine.isInField = true;
    for (int i = 0; i < 1000; ++i) {
        events.clear();
        const SteadyTime start = loop.now();
        const SteadyTime pressTime = start + milliseconds(number(400));
        const SteadyTime end = pressTime + milliseconds(60 + number(1500));
        at(pressTime, [this] { press(); });
        maxLatency = 900;
        for (auto time = start + repetition->delay; time < end; time += repetition->interval) {
            report(1, time);
        }
        show(altKey, true, end);
        show(spaceKey, true, end + 10ms);
        run();
        loop.runFor(3s);
        ASSERT_EQ(events, "P1R1") << i;
    }
}

// As with ten times more programs than processors.
TEST_F(RandomShortcutHolds, OnABusyMachineALongHoldIsOne) {
    maxLatency = 170;
    for (int i = 0; i < 1000; ++i) {
        events.clear();
        const SteadyTime start = loop.now();
        reportHeld(1, start, start + milliseconds(600 + number(3000)));
        run();
        ASSERT_EQ(events, "P1") << i;
        loop.runFor(2s);
        ASSERT_EQ(events, "P1R1") << i;
    }
}

}  // namespace

}  // namespace tarvik::tests
