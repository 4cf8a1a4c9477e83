// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "platform/macos/system/MonotonicClock.h"

namespace tarvik::macdesktop {

namespace {

TEST(MonotonicClockTest, TheClockMovesOnAndNeverBack) {
    const MonotonicClock clock;
    const TimePoint start = clock.now();
    TimePoint last = start;
    while (last == start) {
        const TimePoint now = clock.now();
        ASSERT_GE(now, last);
        last = now;
    }
    EXPECT_LT(last - start, Seconds(10));
}

}  // namespace

}  // namespace tarvik::macdesktop
