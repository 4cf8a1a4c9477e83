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

TEST_F(BlockQueueTest, BlocksComeInTheOrderOfTheirSubmission) {
    EXPECT_FALSE(queue_.isAnyReady());
    EXPECT_FALSE(queue_.takeNext());
    queue_.append(note("first"));
    queue_.append(note("second"));
    EXPECT_TRUE(queue_.isAnyReady());
    EXPECT_EQ(runAll(), (Names{"first", "second"}));
    EXPECT_FALSE(queue_.isAnyReady());
}

TEST_F(BlockQueueTest, AnEmptyBlockIsNone) {
    queue_.append(nullptr);
    queue_.redeem(queue_.hold(at(1), nullptr));
    EXPECT_FALSE(queue_.isAnyReady());
}

TEST_F(BlockQueueTest, ABlockThatIsHeldBackIsNotReadyBeforeItsTicketIsRedeemed) {
    const BlockQueue::Ticket ticket = queue_.hold(at(1), note("held"));
    queue_.append(note("ready"));
    EXPECT_EQ(runAll(), Names{"ready"});
    queue_.redeem(ticket);
    EXPECT_EQ(runAll(), Names{"held"});
    queue_.redeem(ticket);
    EXPECT_FALSE(queue_.isAnyReady());
}

TEST_F(BlockQueueTest, ALaterTicketBringsThoseOfEarlierMomentsFirst) {
    const BlockQueue::Ticket third = queue_.hold(at(3), note("third"));
    const BlockQueue::Ticket first = queue_.hold(at(1), note("first"));
    const BlockQueue::Ticket second = queue_.hold(at(2), note("second"));
    queue_.redeem(second);
    EXPECT_EQ(runAll(), (Names{"first", "second"}));
    queue_.redeem(first);
    EXPECT_FALSE(queue_.isAnyReady());
    queue_.redeem(third);
    EXPECT_EQ(runAll(), Names{"third"});
}

TEST_F(BlockQueueTest, BlocksOfOneMomentKeepTheOrderOfTheirSubmission) {
    const BlockQueue::Ticket first = queue_.hold(at(1), note("first"));
    const BlockQueue::Ticket second = queue_.hold(at(1), note("second"));
    queue_.redeem(first);
    EXPECT_EQ(runAll(), Names{"first"});
    queue_.redeem(second);
    EXPECT_EQ(runAll(), Names{"second"});
}

TEST_F(BlockQueueTest, ABlockMayRunTheOnesAfterItAsAnAlertDoes) {
    queue_.append([this] {
        ran_.emplace_back("alert opens");
        queue_.takeNext()();
        ran_.emplace_back("alert closes");
    });
    queue_.append(note("meanwhile"));
    EXPECT_EQ(runAll(), (Names{"alert opens", "meanwhile", "alert closes"}));
}

TEST_F(BlockQueueTest, DiscardedBlocksAreDestroyedAndMaySubmitWhileTheyAre) {
    // Submits when it goes.
    auto submitter = std::shared_ptr<int>(new int, [this](const int* value) {
        delete value;
        queue_.append(note("late"));
    });
    const std::weak_ptr<int> alive = submitter;
    queue_.append([submitter] {});
    const BlockQueue::Ticket ticket = queue_.hold(at(1), [submitter] {});
    submitter.reset();
    queue_.discard();
    EXPECT_TRUE(alive.expired());
    EXPECT_TRUE(queue_.isAnyReady());
    queue_.discard();
    queue_.redeem(ticket);
    EXPECT_FALSE(queue_.isAnyReady());
}

TEST_F(BlockQueueTest, SeveralThreadsMaySubmit) {
    constexpr int threads = 4;
    constexpr int each = 500;
    std::vector<std::thread> submitters;
    for (int thread = 0; thread < threads; ++thread) {
        submitters.emplace_back([this] {
            for (int i = 0; i < each; ++i) {
                queue_.redeem(queue_.hold(at(i), note("held")));
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
