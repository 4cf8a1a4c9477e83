// SPDX-License-Identifier: MIT

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include "tests/linux/gnome/ShortcutHoldTest.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::HotKeyNumber;
using linuxdesktop::SteadyTime;
using std::chrono::milliseconds;

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
