// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <limits>

#include "tests/support/SimulatedPlatform.h"
#include "usage/UsageTracker.h"

namespace tarvik {
namespace {

constexpr auto totalKey = "totalDictationSeconds";
constexpr auto tenShownKey = "ctaTenMinuteShown";
constexpr auto sixtyShownKey = "ctaSixtyMinuteShown";
constexpr auto dismissalKey = "ctaPermanentlyDismissed";

class Usage : public testing::Test {
  protected:
    std::optional<CTATier> record(std::int64_t seconds) {
        return UsageTracker::shared().recordSession(seconds);
    }
    std::int64_t total() { return defaults().integerForKey(totalKey); }
    simulated::SimulatedUserDefaults& defaults() { return platform.userDefaults(); }

    simulated::SimulatedPlatform platform;
};

TEST_F(Usage, SessionWithoutAWholeSecondIsIgnored) {
    EXPECT_EQ(record(0), std::nullopt);
    EXPECT_EQ(record(-5), std::nullopt);
    EXPECT_EQ(defaults().writes(), 0);
    EXPECT_FALSE(defaults().has(totalKey));
}

TEST_F(Usage, TenMinutesAreDueAtExactlySixHundredSeconds) {
    EXPECT_EQ(record(599), std::nullopt);
    EXPECT_EQ(total(), 599);
    EXPECT_FALSE(defaults().boolForKey(tenShownKey));
    EXPECT_EQ(record(1), CTATier::tenMinute);
    EXPECT_EQ(total(), 600);
    EXPECT_TRUE(defaults().boolForKey(tenShownKey));
}

TEST_F(Usage, LongFirstSessionGivesSixtyMinutesFirstAndTenMinutesNext) {
    EXPECT_EQ(record(3600), CTATier::sixtyMinute);
    EXPECT_FALSE(defaults().boolForKey(tenShownKey));
    EXPECT_TRUE(defaults().boolForKey(sixtyShownKey));
    EXPECT_EQ(record(1), CTATier::tenMinute);
    EXPECT_EQ(record(1), std::nullopt);
    EXPECT_EQ(total(), 3602);
}

TEST_F(Usage, SixtyMinutesAreDueAfterTenMinutesWereShown) {
    defaults().setInteger(700, totalKey);
    defaults().setBool(true, tenShownKey);
    EXPECT_EQ(record(2899), std::nullopt);
    EXPECT_EQ(total(), 3599);
    EXPECT_EQ(record(1), CTATier::sixtyMinute);
    EXPECT_TRUE(defaults().boolForKey(sixtyShownKey));
}

TEST_F(Usage, TotalBetweenTheLimitsGivesTenMinutes) {
    EXPECT_EQ(record(3599), CTATier::tenMinute);
    EXPECT_FALSE(defaults().boolForKey(sixtyShownKey));
}

TEST_F(Usage, AfterBothTiersOnlyTheTotalGrows) {
    defaults().setInteger(5000, totalKey);
    defaults().setBool(true, tenShownKey);
    defaults().setBool(true, sixtyShownKey);
    EXPECT_EQ(record(100), std::nullopt);
    EXPECT_EQ(total(), 5100);
}

TEST_F(Usage, AfterADismissalOnlyTheTotalGrows) {
    UsageTracker::shared().dismissPermanently();
    EXPECT_TRUE(defaults().boolForKey(dismissalKey));
    EXPECT_EQ(record(599), std::nullopt);
    EXPECT_EQ(record(1), std::nullopt);
    EXPECT_EQ(record(3600), std::nullopt);
    EXPECT_EQ(total(), 4200);
    EXPECT_FALSE(defaults().has(tenShownKey));
    EXPECT_FALSE(defaults().has(sixtyShownKey));
}

TEST_F(Usage, DismissalChangesNothingElse) {
    defaults().setInteger(700, totalKey);
    defaults().setBool(true, tenShownKey);
    const int writes = defaults().writes();
    UsageTracker::shared().dismissPermanently();
    EXPECT_EQ(defaults().writes(), writes + 1);
    EXPECT_EQ(total(), 700);
    EXPECT_TRUE(defaults().boolForKey(tenShownKey));
}

TEST_F(Usage, ValuesOfAnotherTypeReadAsAbsent) {
    defaults().setString("700", totalKey);
    defaults().setString("true", tenShownKey);
    defaults().setInteger(1, dismissalKey);
    EXPECT_EQ(record(600), CTATier::tenMinute);
    EXPECT_EQ(total(), 600);
}

TEST(UsageOfTheNextRun, ContinuesWithTheStoredTotal) {
    simulated::UserDefaultsContents leftBehind;
    {
        simulated::SimulatedPlatform first;
        EXPECT_EQ(UsageTracker::shared().recordSession(599), std::nullopt);
        leftBehind = first.userDefaults().contents();
    }
    simulated::SimulatedPlatform second(leftBehind);
    EXPECT_EQ(UsageTracker::shared().recordSession(1), CTATier::tenMinute);
}

using UsageDeathTest = Usage;

/// Prints the stored total of the aborting process. A signal handler, so it allocates no memory.
void printStoredTotal(int /*signal*/) {
    auto& ending = static_cast<simulated::SimulatedPlatform&>(platform::Platform::current());
    std::cerr << "said "
              << ending.log().count("TarvikDictate: total dictation time out of range — stopping")
              << " time, stored " << ending.userDefaults().integerForKey(totalKey) << std::endl;
}

TEST_F(UsageDeathTest, OverflowIsLoggedAndAbortsWithTheOldTotal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    defaults().setInteger(std::numeric_limits<std::int64_t>::max() - 10, totalKey);
    UsageTracker::shared();
    EXPECT_EXIT(
        {
            std::signal(SIGABRT, printStoredTotal);
            record(11);
        },
        testing::KilledBySignal(SIGABRT), "said 1 time, stored 9223372036854775797");
}

TEST_F(Usage, MaxTotalIsReached) {
    defaults().setInteger(std::numeric_limits<std::int64_t>::max() - 10, totalKey);
    record(10);
    EXPECT_EQ(total(), std::numeric_limits<std::int64_t>::max());
}

}  // namespace
}  // namespace tarvik
