// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "settings/LoginItem.h"
#include "tests/support/SimulatedPlatform.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

constexpr auto flag = "loginItemAutoConfigured";

/// The part of a launch that concerns the login item.
void enableOnFirstRun(simulated::SimulatedPlatform& platform) {
    LoginItem::enableOnFirstRun(platform.loginItem(), platform.userDefaults(), platform.log());
}

bool setEnabled(simulated::SimulatedPlatform& platform, bool enabled) {
    return LoginItem::setEnabled(enabled, platform.loginItem(), platform.log());
}

TEST(LoginItem, FirstLaunchRegistersOnceAndRemembersIt) {
    simulated::SimulatedPlatform platform;
    enableOnFirstRun(platform);
    EXPECT_EQ(platform.loginItem().registrations, 1);
    EXPECT_TRUE(platform.userDefaults().boolForKey(flag));
    EXPECT_EQ(platform.log().lines(),
              Lines({"TarvikDictate: registered as login item (first run)"}));
}

TEST(LoginItem, FailedRegistrationIsRetriedAtTheNextLaunch) {
    simulated::UserDefaultsContents leftBehind;
    {
        simulated::SimulatedPlatform first;
        first.loginItem().registerFailure = Error{1, "Operation not permitted"};
        enableOnFirstRun(first);
        EXPECT_FALSE(first.userDefaults().has(flag));
        EXPECT_EQ(first.log().lines(), Lines({"TarvikDictate: LoginItem.setEnabled(true) failed: "
                                              "Operation not permitted"}));
        leftBehind = first.userDefaults().contents();
    }
    simulated::SimulatedPlatform second(leftBehind);
    enableOnFirstRun(second);
    EXPECT_EQ(second.loginItem().registrations, 1);
    EXPECT_TRUE(second.userDefaults().boolForKey(flag));
}

TEST(LoginItem, LaterLaunchDoesNotOverruleAUserWhoSwitchedItOff) {
    simulated::UserDefaultsContents leftBehind;
    {
        simulated::SimulatedPlatform first;
        enableOnFirstRun(first);
        EXPECT_TRUE(setEnabled(first, false));
        EXPECT_TRUE(first.userDefaults().boolForKey(flag));
        leftBehind = first.userDefaults().contents();
    }
    simulated::SimulatedPlatform second(leftBehind);
    enableOnFirstRun(second);
    EXPECT_EQ(second.loginItem().registrations, 0);
    EXPECT_TRUE(second.log().lines().empty());
}

TEST(LoginItem, FlagOfAnotherTypeCountsAsNotSet) {
    simulated::SimulatedPlatform platform({{flag, std::string("true")}});
    enableOnFirstRun(platform);
    EXPECT_EQ(platform.loginItem().registrations, 1);
}

TEST(LoginItem, SwitchingSucceedsWithoutALogLine) {
    simulated::SimulatedPlatform platform;
    EXPECT_TRUE(setEnabled(platform, true));
    EXPECT_TRUE(setEnabled(platform, false));
    EXPECT_TRUE(platform.log().lines().empty());
    EXPECT_FALSE(platform.userDefaults().has(flag));
}

TEST(LoginItem, SwitchingDoesNotReadTheStatusFirst) {
    simulated::SimulatedPlatform platform;
    platform.loginItem().currentStatus = platform::LoginItemStatus::enabled;
    EXPECT_TRUE(setEnabled(platform, true));
    EXPECT_EQ(platform.loginItem().registrations, 1);
    platform.loginItem().currentStatus = platform::LoginItemStatus::notRegistered;
    EXPECT_TRUE(setEnabled(platform, false));
    EXPECT_EQ(platform.loginItem().unregistrations, 1);
}

TEST(LoginItem, FailureToSwitchOffIsLogged) {
    simulated::SimulatedPlatform platform;
    platform.loginItem().unregisterFailure = Error{22, "Invalid argument"};
    EXPECT_FALSE(setEnabled(platform, false));
    EXPECT_EQ(platform.log().lines(),
              Lines({"TarvikDictate: LoginItem.setEnabled(false) failed: Invalid argument"}));
}

}  // namespace
}  // namespace tarvik
