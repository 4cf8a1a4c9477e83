// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/JoiningThread.h"
#include "tests/support/SimulatedTime.h"

namespace tarvik::simulated {
namespace {

using Order = std::vector<std::string>;

class Time : public testing::Test {
  protected:
    std::function<void()> note(const std::string& name) {
        return [this, name] { order.push_back(name); };
    }
    /// Seconds since the beginning of the test.
    double elapsed() { return Seconds(time.now() - start).count(); }

    SimulatedTime time;
    Order order;
    const TimePoint start = time.now();
};

TEST_F(Time, BlocksRunInTheOrderOfTheirTimesThenOfTheirSubmission) {
    time.asyncAfter(Seconds(2), note("two"));
    time.asyncAfter(Seconds(1), note("one"));
    time.asyncAfter(Seconds(1), note("one again"));
    time.async(note("now"));
    time.advance(Seconds(2));
    EXPECT_EQ(order, Order({"now", "one", "one again", "two"}));
}

TEST_F(Time, BlockNeverRunsInsideItsSubmission) {
    time.async([&] {
        time.async(note("inner"));
        order.push_back("outer");
    });
    EXPECT_TRUE(order.empty());
    time.runUntilIdle();
    EXPECT_EQ(order, Order({"outer", "inner"}));
}

TEST_F(Time, DelayedBlockComesSlightlyLateAndNeverEarly) {
    double calledAt = 0;
    time.asyncAfter(Seconds(30), [&] { calledAt = elapsed(); });
    time.advance(Seconds(29.9999));
    EXPECT_EQ(calledAt, 0);
    time.advance(Seconds(0.0001));
    EXPECT_GT(calledAt, 30.0);
    EXPECT_LT(calledAt, 30.001);
}

TEST_F(Time, WithoutLatenessBlocksAndTicksAreExact) {
    time.setLateness(Seconds(0));
    std::vector<double> ticks;
    const auto timer =
        time.scheduledRepeatingTimer(Seconds(5), [&] { ticks.push_back(elapsed()); });
    time.advance(Seconds(600));
    ASSERT_EQ(ticks.size(), 120U);
    EXPECT_EQ(ticks[5], 30.0);
    EXPECT_EQ(ticks.back(), 600.0);
}

TEST_F(Time, LatenessDoesNotAddUpOverTheTicks) {
    const auto timer = time.scheduledRepeatingTimer(Seconds(5), note("tick"));
    time.advance(Seconds(600));
    EXPECT_EQ(order.size(), 120U);
    EXPECT_NEAR(elapsed(), 600, 0.001);
}

TEST_F(Time, MissedTicksAreSkipped) {
    const auto timer = time.scheduledRepeatingTimer(Seconds(5), note("tick"));
    time.stall(Seconds(23));
    time.runUntilIdle();
    EXPECT_EQ(order.size(), 1U);
    time.advance(Seconds(2));
    EXPECT_EQ(order.size(), 2U);
}

TEST_F(Time, TimerEndsWhenItIsInvalidatedInsideItsBlockOrDropped) {
    std::unique_ptr<platform::Timer> first;
    first = time.scheduledRepeatingTimer(Seconds(1), [&] {
        order.emplace_back("first");
        first->invalidate();
    });
    auto second = time.scheduledRepeatingTimer(Seconds(1), note("second"));
    time.advance(Seconds(1));
    second.reset();
    time.advance(Seconds(10));
    EXPECT_EQ(order, Order({"first", "second"}));
    EXPECT_EQ(time.runningTimers(), 0U);
}

TEST_F(Time, TimerMayBeDroppedInsideItsBlock) {
    std::unique_ptr<platform::Timer> timer;
    timer = time.scheduledRepeatingTimer(Seconds(1), [&] {
        order.emplace_back("tick");
        timer.reset();
    });
    time.advance(Seconds(10));
    EXPECT_EQ(order, Order({"tick"}));
}

TEST_F(Time, BlocksOfOtherThreadsAreWaitedFor) {
    bool ran = false;
    JoiningThread other([&] { time.async([&] { ran = true; }); });
    EXPECT_TRUE(time.runUntil([&] { return ran; }));
}

TEST_F(Time, BlockMayRunOthersLikeAModalLoop) {
    time.async([&] {
        time.async(note("inner"));
        time.runUntilIdle();
        order.push_back("outer");
    });
    time.runUntilIdle();
    EXPECT_EQ(order, Order({"inner", "outer"}));
}

}  // namespace
}  // namespace tarvik::simulated
