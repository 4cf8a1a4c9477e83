// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/macos/system/BlockQueue.h"

namespace tarvik::macdesktop {

namespace {

class BlockQueueTest : public testing::Test {
  protected:
    std::function<void()> note(const std::string& name) {
        return [this, name] { ran_.push_back(name); };
    }

    std::vector<std::string> runAll() {
        while (const std::function<void()> block = queue_.takeNext()) {
            block();
        }
        return std::exchange(ran_, {});
    }

    static TimePoint at(double seconds) { return TimePoint(Seconds(seconds)); }

    BlockQueue queue_;
    std::vector<std::string> ran_;
};

using Names = std::vector<std::string>;

TEST_F(BlockQueueTest, BlocksComeInTheOrderInWhichTheyWereAdded) {
    EXPECT_FALSE(queue_.hasReadyBlock());
    EXPECT_FALSE(queue_.takeNext());
    queue_.append(note("first"));
    queue_.append(note("second"));
    EXPECT_TRUE(queue_.hasReadyBlock());
    EXPECT_EQ(runAll(), (Names{"first", "second"}));
    EXPECT_FALSE(queue_.hasReadyBlock());
}

TEST_F(BlockQueueTest, AnEmptyBlockIsIgnored) {
    queue_.append(nullptr);
    queue_.release(queue_.schedule(at(1), nullptr));
    EXPECT_FALSE(queue_.hasReadyBlock());
}

TEST_F(BlockQueueTest, AScheduledBlockIsNotReadyBeforeItsTicketIsReleased) {
    const BlockQueue::Ticket ticket = queue_.schedule(at(1), note("scheduled"));
    queue_.append(note("ready"));
    EXPECT_EQ(runAll(), Names{"ready"});
    queue_.release(ticket);
    EXPECT_EQ(runAll(), Names{"scheduled"});
    queue_.release(ticket);
    EXPECT_FALSE(queue_.hasReadyBlock());
}

TEST_F(BlockQueueTest, ALaterTicketReleasesEarlierDeadlinesFirst) {
    const BlockQueue::Ticket third = queue_.schedule(at(3), note("third"));
    const BlockQueue::Ticket first = queue_.schedule(at(1), note("first"));
    const BlockQueue::Ticket second = queue_.schedule(at(2), note("second"));
    queue_.release(second);
    EXPECT_EQ(runAll(), (Names{"first", "second"}));
    queue_.release(first);
    EXPECT_FALSE(queue_.hasReadyBlock());
    queue_.release(third);
    EXPECT_EQ(runAll(), Names{"third"});
}

TEST_F(BlockQueueTest, BlocksOfOneDeadlineKeepTheOrderInWhichTheyWereAdded) {
    const BlockQueue::Ticket first = queue_.schedule(at(1), note("first"));
    const BlockQueue::Ticket second = queue_.schedule(at(1), note("second"));
    queue_.release(first);
    EXPECT_EQ(runAll(), Names{"first"});
    queue_.release(second);
    EXPECT_EQ(runAll(), Names{"second"});
}

TEST_F(BlockQueueTest, ABlockMayRunLaterBlocksAsAnAlertDoes) {
    queue_.append([this] {
        ran_.emplace_back("alert opens");
        queue_.takeNext()();
        ran_.emplace_back("alert closes");
    });
    queue_.append(note("meanwhile"));
    EXPECT_EQ(runAll(), (Names{"alert opens", "meanwhile", "alert closes"}));
}

TEST_F(BlockQueueTest, DiscardedBlocksAreDestroyedAndMayAddOthersMeanwhile) {
    // Adds a block when it is destroyed.
    auto submitter = std::shared_ptr<int>(new int, [this](const int* value) {
        delete value;
        queue_.append(note("late"));
    });
    const std::weak_ptr<int> alive = submitter;
    queue_.append([submitter] {});
    const BlockQueue::Ticket ticket = queue_.schedule(at(1), [submitter] {});
    submitter.reset();
    queue_.discard();
    EXPECT_TRUE(alive.expired());
    EXPECT_TRUE(queue_.hasReadyBlock());
    queue_.discard();
    queue_.release(ticket);
    EXPECT_FALSE(queue_.hasReadyBlock());
}

TEST_F(BlockQueueTest, SeveralThreadsMayAddBlocks) {
    constexpr int threads = 4;
    constexpr int each = 500;
    std::vector<std::thread> submitters;
    for (int thread = 0; thread < threads; ++thread) {
        submitters.emplace_back([this] {
            for (int i = 0; i < each; ++i) {
                queue_.release(queue_.schedule(at(i), note("scheduled")));
                queue_.append(note("ready"));
            }
        });
    }
    for (std::thread& submitter : submitters) {
        submitter.join();
    }
    EXPECT_EQ(runAll().size(), std::size_t{2} * threads * each);
}

}  // namespace

}  // namespace tarvik::macdesktop
