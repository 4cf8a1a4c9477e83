// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>

#include "platform/linux/input/RepeatedHold.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::RepeatedHold;
using Report = RepeatedHold::Report;

class RepeatedHoldTest : public testing::Test {
  protected:
    Report report(linuxdesktop::HotKeyNumber number = 1) {
        const Report heard = hold.handle(number, now);
        if (heard == Report::press) {
            hold.end();
            hold.begin(number, now);
        }
        return heard;
    }
    Report reportAfter(std::chrono::milliseconds time) {
        now += time;
        return report();
    }
    // Of a person who sees the hold end by another way than its repeats.
    void endEarly() {
        hold.expectLateReports(now);
        EXPECT_EQ(hold.end(), 1U);
    }

    RepeatedHold hold;
    linuxdesktop::SteadyTime now{1h};
};

TEST_F(RepeatedHoldTest, APressIsHeldUntilItsEnd) {
    EXPECT_EQ(hold.number(), std::nullopt);
    EXPECT_EQ(hold.end(), std::nullopt);
    EXPECT_EQ(report(), Report::press);
    EXPECT_EQ(hold.number(), 1U);
    EXPECT_EQ(hold.repeats(), 0);
    EXPECT_EQ(hold.end(), 1U);
    EXPECT_EQ(hold.number(), std::nullopt);
    EXPECT_EQ(report(), Report::press);
}

TEST_F(RepeatedHoldTest, EveryFurtherReportOfTheHotkeyIsARepeat) {
    report();
    for (int i = 1; i <= 5; ++i) {
        EXPECT_EQ(reportAfter(30ms), Report::repeat);
        EXPECT_EQ(hold.repeats(), i);
    }
}

TEST_F(RepeatedHoldTest, AnotherHotkeyIsAPress) {
    report();
    reportAfter(30ms);
    EXPECT_EQ(report(2), Report::press);
    EXPECT_EQ(hold.number(), 2U);
    EXPECT_EQ(hold.repeats(), 0);
}

TEST_F(RepeatedHoldTest, ItsTimeoutGrowsWithTheLongestTimeBetweenTwoRepeats) {
    report();
    EXPECT_EQ(hold.timeout(500ms), 500ms);
    // Not the delay before the first repeat.
    reportAfter(600ms);
    EXPECT_EQ(hold.timeout(500ms), 500ms);
    reportAfter(300ms);
    reportAfter(30ms);
    EXPECT_EQ(hold.timeout(500ms), 900ms);
    EXPECT_EQ(hold.timeout(2s), 2s);
    hold.end();
    EXPECT_EQ(hold.timeout(500ms), 500ms);
}

TEST_F(RepeatedHoldTest, RepeatsThatComeAfterTheEndAreNoPresses) {
    report();
    reportAfter(500ms);
    endEarly();
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(reportAfter(249ms), Report::late);
    }
    EXPECT_EQ(hold.number(), std::nullopt);
    EXPECT_EQ(reportAfter(250ms), Report::press);
}

// A press soon after the end looks like a late repeat, and so do its own repeats.
TEST_F(RepeatedHoldTest, AHoldSoonAfterTheEndIsHeardAfterASecond) {
    report();
    reportAfter(500ms);
    endEarly();
    for (auto time = 0ms; time < 960ms; time += 40ms) {
        EXPECT_EQ(reportAfter(40ms), Report::late);
    }
    EXPECT_EQ(reportAfter(40ms), Report::press);
    EXPECT_EQ(reportAfter(40ms), Report::repeat);
}

TEST_F(RepeatedHoldTest, SlowRepeatsAreExpectedForLonger) {
    report();
    reportAfter(500ms);
    reportAfter(200ms);
    endEarly();
    EXPECT_EQ(reportAfter(599ms), Report::late);
    EXPECT_EQ(reportAfter(600ms), Report::press);
}

// The reports have the times at which they were made.
TEST_F(RepeatedHoldTest, AReportFromBeforeTheEndIsLate) {
    report();
    reportAfter(500ms);
    hold.expectEarlierReports(now);
    hold.expectEarlierReports(now);
    hold.end();
    now += 300ms;
    EXPECT_EQ(hold.handle(1, now - 301ms), Report::late);
    EXPECT_EQ(hold.handle(2, now - 301ms), Report::press);
    EXPECT_EQ(hold.handle(1, now - 300ms), Report::press);
}

TEST_F(RepeatedHoldTest, AnEarlierReportShortensNoTimeOfLateOnes) {
    report();
    reportAfter(500ms);
    endEarly();
    EXPECT_EQ(hold.handle(1, now - 200ms), Report::late);
    EXPECT_EQ(reportAfter(249ms), Report::late);
}

TEST_F(RepeatedHoldTest, AnotherHotkeyAfterTheEndIsAPress) {
    report();
    endEarly();
    EXPECT_EQ(report(2), Report::press);
}

TEST_F(RepeatedHoldTest, AnEndWithoutLateReportsMakesTheNextReportAPress) {
    report();
    endEarly();
    hold.expectNoLateReports();
    EXPECT_EQ(report(), Report::press);
}

TEST_F(RepeatedHoldTest, TheDelayBeforeTheFirstRepeatIsLearnt) {
    report();
    reportAfter(600ms);
    EXPECT_EQ(hold.repeatDelay(), std::nullopt);
    reportAfter(40ms);
    reportAfter(40ms);
    EXPECT_EQ(hold.repeatDelay(), 600ms);
    hold.end();
    EXPECT_EQ(hold.repeatDelay(), 600ms);
}

// Whose releases were not reported.
TEST_F(RepeatedHoldTest, PressesOneAfterTheOtherTeachNoDelay) {
    report();
    reportAfter(600ms);
    reportAfter(200ms);
    EXPECT_EQ(hold.repeatDelay(), std::nullopt);
}

}  // namespace

}  // namespace tarvik::tests
