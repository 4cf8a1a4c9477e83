// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <chrono>
#include <future>

#include "platform/linux/loop/PollLoop.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::PollLoop;

TEST(PollLoop, EndsWithoutASleepWhenItIsQuitBeforeOne) {
    PollLoop loop;
    const auto ended = std::async(std::launch::async, [&] { loop.run([&] { loop.quit(); }); });
    EXPECT_EQ(ended.wait_for(1s), std::future_status::ready);
    loop.post([] {});
}

// Nobody could wake the loop, and whoever asked it for something would wait in vain.
TEST(PollLoopDeathTest, EndsTheProcessWhenThereIsNoDescriptorLeft) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto makeWithoutDescriptors = [] {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_NOFILE, &none);
        const PollLoop loop;
    };
    EXPECT_EXIT(makeWithoutDescriptors(), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace

}  // namespace tarvik::tests
