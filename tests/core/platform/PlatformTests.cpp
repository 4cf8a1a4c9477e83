// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "tests/support/SimulatedPlatform.h"

namespace tarvik {
namespace {

/// A shared instance that reports its construction and destruction.
struct Instance {
    explicit Instance(platform::Platform& owner) : platform(owner) { platform.log().write("made"); }
    ~Instance() { platform.log().write("gone"); }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    platform::Platform& platform;
};

struct OtherInstance {
    explicit OtherInstance(platform::Platform&) {}
};

TEST(Platform, IsTheCurrentOneWhileItLives) {
    simulated::SimulatedPlatform platform;
    EXPECT_EQ(&platform::Platform::current(), &platform);
}

TEST(Platform, MakesASharedInstanceOnFirstUseAndOnce) {
    simulated::SimulatedPlatform platform;
    EXPECT_TRUE(platform.log().lines().empty());
    Instance& first = platform.shared<Instance>();
    EXPECT_EQ(&platform.shared<Instance>(), &first);
    EXPECT_EQ(platform.log().lines(), std::vector<std::string>({"made"}));
    EXPECT_NE(static_cast<void*>(&platform.shared<OtherInstance>()), &first);
}

TEST(Platform, SharedInstancesAreNewWithEachPlatform) {
    for (int run = 0; run < 2; ++run) {
        simulated::SimulatedPlatform platform;
        platform.shared<Instance>();
        EXPECT_EQ(platform.log().count("made"), 1U);
    }
}

TEST(PlatformDeathTest, ThereIsAtMostOneAtATime) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const simulated::SimulatedPlatform first;
    EXPECT_EXIT(const simulated::SimulatedPlatform second, testing::KilledBySignal(SIGABRT), "");
}

TEST(PlatformDeathTest, CurrentWithoutAPlatformAborts) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(static_cast<void>(platform::Platform::current()), testing::KilledBySignal(SIGABRT),
                "");
}

}  // namespace
}  // namespace tarvik
