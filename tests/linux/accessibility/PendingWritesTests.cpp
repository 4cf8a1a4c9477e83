// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/accessibility/PendingWrites.h"
#include "tests/support/RealTimeQueue.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::SteadyTime;
using linuxdesktop::WriteReply;
using namespace std::chrono_literals;

class PendingWritesTest : public testing::Test {
  protected:
    static constexpr platform::ProcessIdentifier process = 101;

    /// A write whose program has not replied in time.
    static std::shared_ptr<WriteReply> newPendingReply() {
        const auto reply = std::make_shared<WriteReply>();
        EXPECT_EQ(reply->await(SteadyTime()), platform::axErrorCannotComplete);
        EXPECT_TRUE(reply->isPending());
        return reply;
    }
    std::shared_ptr<linuxdesktop::PendingWrites> newWrites(std::chrono::milliseconds timeout) {
        return std::make_shared<linuxdesktop::PendingWrites>(
            mainQueue,
            linuxdesktop::PendingWrites::Typing{
                [this](platform::ProcessIdentifier /*process*/) { return canType; },
                [this](platform::ProcessIdentifier /*process*/, std::size_t units) {
                    released.push_back(units);
                }},
            timeout);
    }

    bool canType = true;
    std::vector<std::size_t> released;
    RealTimeQueue mainQueue;
};

TEST_F(PendingWritesTest, AreTypedAfterTheTimeoutAndNotWantedAnyMore) {
    const auto writes = newWrites(20ms);
    const auto reply = newPendingReply();
    EXPECT_NE(writes->add(process, reply, "text"), platform::axErrorSuccess);
    EXPECT_TRUE(mainQueue.runUntil([this] { return !released.empty(); }));
    EXPECT_EQ(released, std::vector<std::size_t>{0});
    EXPECT_FALSE(reply->settle(true));
    EXPECT_TRUE(writes->settle(process, SteadyTime()));
}

TEST_F(PendingWritesTest, ThatArriveAreNotTypedWhateverComesFirst) {
    const auto writes = newWrites(20ms);
    const auto reply = newPendingReply();
    EXPECT_NE(writes->add(process, reply, "text"), platform::axErrorSuccess);
    EXPECT_TRUE(reply->settle(true));
    mainQueue.runFor(60ms);
    EXPECT_EQ(released, std::vector<std::size_t>{4});
}

TEST_F(PendingWritesTest, ThatHaveArrivedStayAlthoughTheyAreGivenUpRightAfterwards) {
    const auto reply = newPendingReply();
    bool hasArrived = false;
    reply->whenSettled([&] { hasArrived = reply->giveUp(); });
    EXPECT_TRUE(reply->settle(true));
    EXPECT_TRUE(hasArrived);
}

TEST_F(PendingWritesTest, AreNotWantedWhereNothingCanBeHeld) {
    canType = false;
    const auto writes = newWrites(20ms);
    const auto reply = newPendingReply();
    EXPECT_NE(writes->add(process, reply, "text"), platform::axErrorSuccess);
    EXPECT_FALSE(reply->settle(true));
    const auto settled = newPendingReply();
    EXPECT_TRUE(settled->settle(true));
    EXPECT_EQ(writes->add(process, settled, "text"), platform::axErrorSuccess);
    EXPECT_TRUE(released.empty());
}

TEST_F(PendingWritesTest, AreTypedAtTheEnd) {
    auto writes = newWrites(20ms);
    const auto reply = newPendingReply();
    EXPECT_NE(writes->add(process, reply, "text"), platform::axErrorSuccess);
    writes.reset();
    EXPECT_EQ(released, std::vector<std::size_t>{0});
    EXPECT_FALSE(reply->settle(true));
    mainQueue.runFor(40ms);
    EXPECT_EQ(released.size(), 1U);
}

}  // namespace

}  // namespace tarvik::tests
