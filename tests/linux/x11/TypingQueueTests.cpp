// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>

#include "platform/linux/x11/TypingQueue.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::TypingQueue;
using platform::ProcessIdentifier;

class TypingQueueTest : public testing::Test {
  protected:
    static constexpr ProcessIdentifier first = 101;
    static constexpr ProcessIdentifier second = 102;
    static constexpr xcb_window_t window = 7;

    void push(std::optional<ProcessIdentifier> process, const std::u32string& characters) {
        queue.push({process, characters}, XCB_NONE, [] {});
    }
    TypingQueue::Item take() {
        return queue.take(isRead).value_or(
            TypingQueue::Item{{std::nullopt, U"(nothing)"}, XCB_NONE, {}});
    }
    void putBackUntilRead(TypingQueue::Item item) {
        item.waitsFor = window;
        queue.putBack(std::move(item));
        unread.insert(window);
    }

    TypingQueue queue;
    std::set<xcb_window_t> unread;
    const TypingQueue::IsRead isRead = [this](xcb_window_t asked) {
        return !unread.contains(asked);
    };
};

TEST_F(TypingQueueTest, JoinsTextsForOneProcessThatFollowEachOther) {
    push(first, U"one ");
    push(first, U"two");
    push(second, U"three");
    const auto joined = take();
    EXPECT_EQ(joined.text.characters, U"one two");
    EXPECT_EQ(joined.onTyped.size(), 2U);
    EXPECT_EQ(take().text.characters, U"three");
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_FALSE(queue.take(isRead));
}

TEST_F(TypingQueueTest, LetsOtherProcessesOvertakeATextThatWaitsButNotItsOwn) {
    push(first, U"one");
    push(second, U"two");
    push(first, U"three");
    putBackUntilRead(take());
    EXPECT_EQ(take().text.characters, U"two");
    EXPECT_FALSE(queue.hasNext(isRead));
    EXPECT_FALSE(queue.take(isRead));
    unread.clear();
    EXPECT_TRUE(queue.hasNext(isRead));
    EXPECT_EQ(take().text.characters, U"one");
    EXPECT_EQ(take().text.characters, U"three");
}

TEST_F(TypingQueueTest, KeepsWhatHasBeenTypedOfAText) {
    push(first, U"one");
    auto item = take();
    item.position = 2;
    putBackUntilRead(std::move(item));
    unread.clear();
    EXPECT_EQ(take().position, 2U);
}

TEST_F(TypingQueueTest, GivesUpWhatWaitsForAWindowAndWhatComesAfterItForTheSameProcess) {
    push(first, U"one");
    push(second, U"two");
    push(first, U"three");
    EXPECT_TRUE(queue.takeWaitingFor(window).empty());
    putBackUntilRead(take());
    const auto waiting = queue.takeWaitingFor(window);
    ASSERT_EQ(waiting.size(), 2U);
    EXPECT_EQ(waiting[0].text.characters, U"one");
    EXPECT_EQ(waiting[1].text.characters, U"three");
    EXPECT_EQ(take().text.characters, U"two");
    EXPECT_TRUE(queue.isEmpty());
}

// The text may be for the very process that is waited for.
TEST_F(TypingQueueTest, LetsATextForWhateverHasTheKeyboardOvertakeNothing) {
    push(first, U"one");
    putBackUntilRead(take());
    push(std::nullopt, U"two");
    push(second, U"three");
    EXPECT_FALSE(queue.hasNext(isRead));
    unread.clear();
    EXPECT_EQ(take().text.characters, U"one");
    EXPECT_EQ(take().text.characters, U"two");
    EXPECT_EQ(take().text.characters, U"three");
}

}  // namespace

}  // namespace tarvik::tests
