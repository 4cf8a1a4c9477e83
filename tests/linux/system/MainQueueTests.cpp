// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <QSocketNotifier>
#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <thread>
#include <vector>

#include "platform/linux/loop/FileDescriptor.h"
#include "tests/linux/system/ApplicationTest.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::FileDescriptor;

/// The main queue while one thread has submitted more than the main thread can do at once.
class MainQueueTests : public ApplicationTest {
  protected:
    static constexpr int backlog = 1000;
    /// What may run before a block that waits for nobody: a turn or two, and never the backlog.
    static constexpr std::size_t fewBlocks = 10;

    /// Submits `block` on a thread of its own, and returns when `block` waits.
    void submit(std::function<void()> block) {
        std::thread([&] { mainQueue.async(std::move(block)); }).join();
    }

    /// Another thread submits blocks that note their numbers. `step` runs in each of them.
    void submitBacklog(const std::function<void(int number)>& step) {
        std::thread([&] {
            for (int number = 0; number < backlog; ++number) {
                mainQueue.async([step, number] { step(number); });
            }
        }).join();
    }

    void note(int number) { done.push_back(number); }

    void expectWholeBacklogInOrder() {
        ASSERT_TRUE(runUntil([&] { return done.size() == backlog; }));
        std::vector<int> all(backlog);
        std::iota(all.begin(), all.end(), 0);
        EXPECT_EQ(done, all);
    }

    std::vector<int> done;
};

TEST_F(MainQueueTests, ABacklogHoldsUpNoBlockOfAnotherThread) {
    std::size_t doneBefore = 0;
    submitBacklog([this](int number) { note(number); });
    submit([&] { doneBefore = done.size(); });
    expectWholeBacklogInOrder();
    EXPECT_LT(doneBefore, fewBlocks);
}

TEST_F(MainQueueTests, ABacklogHoldsUpNoSecondHopOnTheMainThread) {
    std::optional<std::size_t> doneBefore;
    // As a transcript is delivered first, and inserted by a block of its own.
    submitBacklog([this](int number) { mainQueue.async([this, number] { note(number); }); });
    submit([&] { mainQueue.async([&] { doneBefore = done.size(); }); });
    expectWholeBacklogInOrder();
    ASSERT_TRUE(doneBefore);
    EXPECT_LT(*doneBefore, fewBlocks);
}

TEST_F(MainQueueTests, BacklogsOfTwoThreadsHoldUpNoSecondHop) {
    std::size_t inserted = 0;
    std::optional<std::size_t> insertedBefore;
    const auto insert = [&](int /*number*/) { mainQueue.async([&] { ++inserted; }); };
    submitBacklog(insert);
    submitBacklog(insert);
    submit([&] { mainQueue.async([&] { insertedBefore = inserted; }); });
    ASSERT_TRUE(runUntil([&] { return inserted == 2 * backlog; }));
    ASSERT_TRUE(insertedBefore);
    EXPECT_LT(*insertedBefore, fewBlocks);
}

TEST_F(MainQueueTests, ABacklogHoldsUpNoDelayedBlockOfTheMainThread) {
    std::optional<std::size_t> doneBefore;
    submitBacklog([&](int number) {
        if (number == 0) {
            constexpr Seconds delay(0.001);
            mainQueue.asyncAfter(delay, [&] { doneBefore = done.size(); });
            const TimePoint due = clock.now() + delay;
            while (clock.now() < due) {
                std::this_thread::yield();
            }
        }
        note(number);
    });
    expectWholeBacklogInOrder();
    ASSERT_TRUE(doneBefore);
    EXPECT_LT(*doneBefore, fewBlocks);
}

TEST_F(MainQueueTests, ABacklogLeavesQtItsTurns) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const FileDescriptor readEnd(ends[0]);
    const FileDescriptor writeEnd(ends[1]);
    std::optional<std::size_t> doneBefore;
    QSocketNotifier notifier(readEnd.number(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&] {
        doneBefore = done.size();
        notifier.setEnabled(false);
    });
    submitBacklog([this](int number) { note(number); });
    ASSERT_EQ(write(writeEnd.number(), "x", 1), 1);
    expectWholeBacklogInOrder();
    ASSERT_TRUE(doneBefore);
    EXPECT_LT(*doneBefore, fewBlocks);
}

TEST_F(MainQueueTests, ABlockThatWaitsBehindNoneOfItsThreadIsNotOvertaken) {
    std::vector<int> order;
    submit([&] { order.push_back(1); });
    submit([&] { order.push_back(2); });
    mainQueue.async([&] { order.push_back(3); });
    submit([&] { order.push_back(4); });
    ASSERT_TRUE(runUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4}));
}

// As at the end of the display, when Qt's loop does not run any more.
TEST_F(MainQueueTests, RunsBlocksWithoutALoop) {
    bool isDone = false;
    submit([&] { mainQueue.asyncAfter(Seconds(0.02), [&] { isDone = true; }); });
    EXPECT_TRUE(mainQueue.runUntil([&] { return isDone; }, Seconds(10)));
    mainQueue.async([this] { note(1); });
    EXPECT_FALSE(mainQueue.runUntil([] { return false; }, Seconds(0.02)));
    EXPECT_EQ(done, std::vector<int>{1});
}

}  // namespace

}  // namespace tarvik::tests
