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
                [this](platform::ProcessIdentifier /*process*/) {
                    return canType ? std::optional(heldUnits) : std::nullopt;
                },
                [this](platform::ProcessIdentifier /*process*/, std::size_t units) {
                    released.push_back(units);
                }},
            timeout);
    }
    /// Adds a pending write of "text".
    static std::shared_ptr<WriteReply> addPending(linuxdesktop::PendingWrites& writes) {
        auto reply = newPendingReply();
        EXPECT_NE(writes.add(process, reply, "text"), platform::axErrorSuccess);
        return reply;
    }
    /// Queues "more" behind a pending write of "text", whose typed text is held.
    std::shared_ptr<WriteReply> queueBehind(linuxdesktop::PendingWrites& writes) {
        heldUnits = 4;
        const auto next = newPendingReply();
        writes.queue(process, element, "more", [this, next](const std::string& text) {
            started.push_back(text);
            return next;
        });
        return next;
    }

    bool canType = true;
    std::size_t heldUnits = 0;
    const platform::AXUIElementRef element = std::make_shared<platform::AXUIElement>();
    /// The texts of the writes that waited.
    std::vector<std::string> started;
    std::vector<std::size_t> released;
    RealTimeQueue mainQueue;
};

TEST_F(PendingWritesTest, AreTypedAfterTheTimeoutAndNotWantedAnyMore) {
    const auto writes = newWrites(20ms);
    const auto reply = addPending(*writes);
    EXPECT_TRUE(mainQueue.runUntil([this] { return !released.empty(); }));
    EXPECT_EQ(released, std::vector<std::size_t>{0});
    EXPECT_FALSE(reply->settle(true));
    EXPECT_FALSE(writes->isPending(process));
}

TEST_F(PendingWritesTest, ThatArriveAreNotTypedWhateverComesFirst) {
    const auto writes = newWrites(20ms);
    const auto reply = addPending(*writes);
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
    const auto reply = addPending(*writes);
    EXPECT_FALSE(reply->settle(true));
    const auto settled = newPendingReply();
    EXPECT_TRUE(settled->settle(true));
    EXPECT_EQ(writes->add(process, settled, "text"), platform::axErrorSuccess);
    EXPECT_TRUE(released.empty());
}

TEST_F(PendingWritesTest, ThatWaitBeginOnceTheWriteBeforeHasArrived) {
    const auto writes = newWrites(10s);
    const auto reply = addPending(*writes);
    const auto next = queueBehind(*writes);
    EXPECT_TRUE(writes->isPending(process));
    EXPECT_TRUE(started.empty());
    EXPECT_TRUE(reply->settle(true));
    EXPECT_TRUE(mainQueue.runUntil([this] { return started.size() == 1; }));
    EXPECT_TRUE(writes->isPending(process));
    EXPECT_TRUE(released.empty());
    EXPECT_TRUE(next->settle(true));
    EXPECT_TRUE(mainQueue.runUntil([this] { return !released.empty(); }));
    EXPECT_EQ(released, std::vector<std::size_t>{8});
    EXPECT_FALSE(writes->isPending(process));
}

// A program that takes long for each write would fall behind.
TEST_F(PendingWritesTest, ThatWaitForOneElementAreJoined) {
    const auto writes = newWrites(10s);
    const auto reply = addPending(*writes);
    const auto next = queueBehind(*writes);
    const auto refuse = [](const std::string& text) -> std::shared_ptr<WriteReply> {
        ADD_FAILURE() << text;
        return nullptr;
    };
    heldUnits = 8;
    writes->queue(process, element, " ж😀", refuse);
    heldUnits = 12;
    const auto last = newPendingReply();
    writes->queue(process, std::make_shared<platform::AXUIElement>(), "other",
                  [&](const std::string& text) {
                      started.push_back(text);
                      return last;
                  });
    EXPECT_TRUE(reply->settle(true));
    EXPECT_TRUE(next->settle(true));
    EXPECT_TRUE(last->settle(true));
    EXPECT_FALSE(writes->isPending(process));
    EXPECT_EQ(started, (std::vector<std::string>{"more ж😀", "other"}));
    EXPECT_EQ(released, std::vector<std::size_t>{17});
}

TEST_F(PendingWritesTest, ThatBeginAtOnceAreTypedWhenTheyAreRefused) {
    const auto writes = newWrites(10s);
    const auto reply = newPendingReply();
    const auto start = [&](const std::string& /*text*/) { return reply; };
    canType = false;
    EXPECT_FALSE(writes->begin(process, element, "text", start));
    EXPECT_FALSE(writes->isPending(process));
    canType = true;
    EXPECT_TRUE(writes->begin(process, element, "text", start));
    EXPECT_TRUE(writes->isPending(process));
    EXPECT_FALSE(reply->settle(false));
    EXPECT_TRUE(mainQueue.runUntil([this] { return !released.empty(); }));
    EXPECT_EQ(released, std::vector<std::size_t>{0});
}

TEST_F(PendingWritesTest, ThatWaitAreTypedWhenTheWriteBeforeHasNotArrived) {
    const auto writes = newWrites(10s);
    const auto reply = addPending(*writes);
    queueBehind(*writes);
    EXPECT_FALSE(reply->settle(false));
    EXPECT_FALSE(writes->isPending(process));
    EXPECT_EQ(released, std::vector<std::size_t>{0});
    EXPECT_TRUE(started.empty());
}

TEST_F(PendingWritesTest, ThatWaitAreTypedAloneWhenTheyAreRefused) {
    const auto writes = newWrites(10s);
    const auto reply = addPending(*writes);
    const auto next = queueBehind(*writes);
    EXPECT_TRUE(reply->settle(true));
    EXPECT_TRUE(writes->isPending(process));
    EXPECT_FALSE(next->settle(false));
    EXPECT_FALSE(writes->isPending(process));
    EXPECT_EQ(released, std::vector<std::size_t>{4});
}

TEST_F(PendingWritesTest, ThatWaitAreTypedAfterTheTimeout) {
    const auto writes = newWrites(20ms);
    const auto reply = addPending(*writes);
    const auto next = queueBehind(*writes);
    EXPECT_TRUE(reply->settle(true));
    EXPECT_TRUE(mainQueue.runUntil([this] { return !released.empty(); }));
    EXPECT_EQ(released, std::vector<std::size_t>{4});
    EXPECT_FALSE(next->settle(true));
}

// The text of a field that nobody knows is posted without a write.
TEST_F(PendingWritesTest, DoNotOvertakeTextThatWasPostedWithoutAWrite) {
    const auto writes = newWrites(10s);
    const auto reply = addPending(*writes);
    heldUnits = 6;
    writes->queue(process, element, "more", [this](const std::string& text) {
        started.push_back(text);
        return newPendingReply();
    });
    EXPECT_TRUE(reply->settle(true));
    EXPECT_FALSE(writes->isPending(process));
    EXPECT_EQ(released, std::vector<std::size_t>{4});
    EXPECT_TRUE(started.empty());
}

TEST_F(PendingWritesTest, AreTypedAtTheEnd) {
    auto writes = newWrites(20ms);
    const auto reply = addPending(*writes);
    writes.reset();
    EXPECT_EQ(released, std::vector<std::size_t>{0});
    EXPECT_FALSE(reply->settle(true));
    mainQueue.runFor(40ms);
    EXPECT_EQ(released.size(), 1U);
}

}  // namespace

}  // namespace tarvik::tests
