// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <thread>
#include <vector>

#include "platform/linux/loop/BackgroundWorker.h"
#include "tests/linux/loop/ThreadShortage.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::BackgroundWorker;

constexpr Seconds timeout(5);

TEST(BackgroundWorker, RunsItsJobsInOrderOnOneOtherThread) {
    std::vector<int> numbers;
    std::vector<std::thread::id> threads;
    BackgroundWorker worker("test", timeout);
    EXPECT_FALSE(worker.error());
    for (const int number : {1, 2, 3}) {
        worker.async([&, number] {
            numbers.push_back(number);
            threads.push_back(std::this_thread::get_id());
        });
    }
    worker.finish();
    EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(threads, std::vector(3, threads.front()));
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(BackgroundWorker, WithoutAThreadEveryJobRunsWhenItIsSubmitted) {
    std::optional<BackgroundWorker> worker;
    {
        const ThreadShortage shortage;
        worker.emplace("test", timeout);
    }
    ASSERT_TRUE(worker->error());
    EXPECT_EQ(worker->error()->code, EAGAIN);
    std::vector<int> numbers;
    worker->async([&] {
        // Not inside this job, but after it.
        worker->async([&] { numbers.push_back(2); });
        numbers.push_back(1);
    });
    EXPECT_EQ(numbers, (std::vector<int>{1, 2}));
    worker->finish();
    worker->async([&] { numbers.push_back(3); });
    EXPECT_EQ(numbers.size(), 2U);
}

}  // namespace

}  // namespace tarvik::tests
