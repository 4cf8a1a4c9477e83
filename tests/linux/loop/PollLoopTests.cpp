// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <chrono>
#include <future>
#include <thread>
#include <vector>

#include "platform/linux/loop/PollLoop.h"
#include "tests/support/JoiningThread.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::PollLoop;

TEST(PollLoop, EndsWithoutASleepWhenItIsQuitBeforeOne) {
    PollLoop loop;
    const auto ended = std::async(std::launch::async, [&] { loop.run([&] { loop.quit(); }); });
    EXPECT_EQ(ended.wait_for(10s), std::future_status::ready);
    loop.post([] {});
}

TEST(PollLoop, RunsTasksOfAnotherThreadInOrderOnItsOwn) {
    PollLoop loop;
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    const simulated::JoiningThread other([&] {
        for (int number = 0; number < 3; ++number) {
            loop.post([&, number] {
                order.push_back(number);
                threads.push_back(std::this_thread::get_id());
            });
        }
        loop.post([&] { loop.quit(); });
    });
    loop.run();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(threads, std::vector<std::thread::id>(3, std::this_thread::get_id()));
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
