// SPDX-License-Identifier: MIT

#include <memory>
#include <vector>

#include "tests/conformance/system/LoopConformance.h"

namespace tarvik::tests {

namespace {

using TimerServiceConformance = LoopConformance;

TEST_P(TimerServiceConformance, TicksComeEveryIntervalAndNeverEarly) {
    constexpr Seconds interval(0.0103);
    const TimePoint start = world->clock().now();
    int ticks = 0;
    const auto timer = world->timers().scheduledRepeatingTimer(interval, [&] {
        ++ticks;
        EXPECT_GE((world->clock().now() - start).count(), (interval * ticks).count());
    });
    EXPECT_TRUE(world->runUntil([&] { return ticks == 10; }));
}

TEST_P(TimerServiceConformance, ATimerThatInvalidatesItselfTicksOnce) {
    int ticks = 0;
    std::unique_ptr<platform::Timer> timer;
    timer = world->timers().scheduledRepeatingTimer(Seconds(0.005), [&] {
        ++ticks;
        timer->invalidate();
        timer->invalidate();
    });
    bool isLater = false;
    world->mainQueue().asyncAfter(Seconds(0.05), [&] { isLater = true; });
    EXPECT_TRUE(world->runUntil([&] { return isLater; }));
    EXPECT_EQ(ticks, 1);
}

TEST_P(TimerServiceConformance, ATimerDroppedInsideItsBlockTicksOnce) {
    int ticks = 0;
    const auto held = std::make_shared<int>(7);
    int seenAfterDrop = 0;
    std::unique_ptr<platform::Timer> timer;
    timer = world->timers().scheduledRepeatingTimer(Seconds(0.005), [&, held] {
        ++ticks;
        timer.reset();
        seenAfterDrop = *held;
    });
    bool isLater = false;
    world->mainQueue().asyncAfter(Seconds(0.05), [&] { isLater = true; });
    EXPECT_TRUE(world->runUntil([&] { return isLater; }));
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(seenAfterDrop, 7);
}

TEST_P(TimerServiceConformance, DroppingATimerStopsIt) {
    int ticks = 0;
    std::unique_ptr<platform::Timer> timer =
        world->timers().scheduledRepeatingTimer(Seconds(0.005), [&] { ++ticks; });
    EXPECT_TRUE(world->runUntil([&] { return ticks >= 2; }));
    timer.reset();
    const int ticksBefore = ticks;
    bool isLater = false;
    world->mainQueue().asyncAfter(Seconds(0.05), [&] { isLater = true; });
    EXPECT_TRUE(world->runUntil([&] { return isLater; }));
    EXPECT_EQ(ticks, ticksBefore);
}

TEST_P(TimerServiceConformance, MissedTicksAreSkipped) {
    const TimePoint start = world->clock().now();
    std::vector<double> tickTimes;
    const auto timer = world->timers().scheduledRepeatingTimer(Seconds(0.02), [&] {
        tickTimes.push_back((world->clock().now() - start).count());
        if (tickTimes.size() == 1) {
            world->stall(Seconds(0.1));
        }
    });
    EXPECT_TRUE(world->runUntil([&] { return tickTimes.size() == 4; }));
    // After the stall at most one missed tick comes at once; the others keep their distance.
    EXPECT_GE(tickTimes[1] - tickTimes[0], 0.1);
    EXPECT_GE(tickTimes[3] - tickTimes[1], 0.02);
}

INSTANTIATE_TEST_SUITE_P(Worlds, TimerServiceConformance, everyLoopWorld(), loopWorldName);

}  // namespace

}  // namespace tarvik::tests
