// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/input/LinuxKeyboardEvents.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using platform::ProcessIdentifier;

constexpr ProcessIdentifier first = 101;
constexpr ProcessIdentifier second = 102;

/// Keeps the texts until a test says that they have been read.
class FakeTyping final : public linuxdesktop::TypingMeans {
  public:
    bool isAvailable() const override { return isPresent; }
    void type(linuxdesktop::TypedText text, std::function<void()> onDone) override {
        texts.push_back(std::move(text));
        onDones.push_back(std::move(onDone));
    }

    bool isPresent = true;
    std::vector<linuxdesktop::TypedText> texts;
    std::vector<std::function<void()>> onDones;
};

class LinuxKeyboardEventsTest : public testing::Test {
  protected:
    void post(std::u16string_view units, std::optional<ProcessIdentifier> process) {
        const auto source = keyboard->createSource(platform::eventSourceStateCombinedSession);
        for (const bool isDown : {true, false}) {
            const auto event = keyboard->createKeyboardEvent(source, 0, isDown);
            ASSERT_NE(event, nullptr);
            keyboard->setUnicodeString(*event, units);
            if (process) {
                keyboard->postToPid(*process, event);
            } else {
                keyboard->post(platform::hidEventTap, event);
            }
        }
    }
    bool handsOver(std::size_t count) {
        return mainQueue.runUntil([&] { return typing.texts.size() == count; });
    }

    RealTimeQueue mainQueue;
    RecordingLog log;
    FakeTyping typing;
    std::shared_ptr<linuxdesktop::LinuxKeyboardEvents> keyboard =
        std::make_shared<linuxdesktop::LinuxKeyboardEvents>(&typing, mainQueue, log);
};

TEST_F(LinuxKeyboardEventsTest, RefusesEventsWithoutAMeansOrWhileItIsNotAvailable) {
    linuxdesktop::LinuxKeyboardEvents without(nullptr, mainQueue, log);
    EXPECT_EQ(without.createSource(0), nullptr);
    EXPECT_EQ(without.createKeyboardEvent(nullptr, 0, true), nullptr);
    typing.isPresent = false;
    EXPECT_EQ(keyboard->createSource(0), nullptr);
    EXPECT_EQ(keyboard->createKeyboardEvent(nullptr, 0, true), nullptr);
}

TEST_F(LinuxKeyboardEventsTest, TellsOfATextThatNothingTypes) {
    post(u"typed", first);
    EXPECT_TRUE(log.lines().empty());
    typing.isPresent = false;
    keyboard->createSource(platform::eventSourceStateCombinedSession);
    EXPECT_EQ(log.lines(),
              std::vector<std::string>{
                  "TarvikDictate: typed text not delivered: nothing can type at present"});
}

TEST_F(LinuxKeyboardEventsTest, TypesTheRunsOfOneBlockTogether) {
    post(u"one ", first);
    post(u"two", first);
    post(u"three", second);
    EXPECT_TRUE(typing.texts.empty());
    ASSERT_TRUE(handsOver(2));
    EXPECT_EQ(typing.texts[0].process, first);
    EXPECT_EQ(typing.texts[0].characters, U"one two");
    EXPECT_EQ(typing.texts[1].process, second);
    EXPECT_EQ(typing.texts[1].characters, U"three");
}

TEST_F(LinuxKeyboardEventsTest, HoldsTheTextForOneProcessUntilItIsReleased) {
    EXPECT_TRUE(keyboard->hold(first));
    post(u"one ", first);
    post(u"two", second);
    ASSERT_TRUE(handsOver(1));
    EXPECT_EQ(typing.texts[0].characters, U"two");
    EXPECT_TRUE(keyboard->isTypingInto(first));
    post(u"three", first);
    keyboard->release(first, 0);
    ASSERT_TRUE(handsOver(2));
    EXPECT_EQ(typing.texts[1].process, first);
    EXPECT_EQ(typing.texts[1].characters, U"one three");
}

TEST_F(LinuxKeyboardEventsTest, DropsWhatHasArrivedAnotherWay) {
    EXPECT_TRUE(keyboard->hold(first));
    post(u"\xD83D\xDE00 one", first);
    keyboard->release(first, 6);
    EXPECT_FALSE(keyboard->isTypingInto(first));
    EXPECT_TRUE(keyboard->hold(first));
    post(u"\xD83D\xDE00 one", first);
    post(u" two", first);
    keyboard->release(first, 6);
    ASSERT_TRUE(handsOver(1));
    EXPECT_EQ(typing.texts[0].characters, U" two");
}

// The core posts the text of a write without a process where it does not know who is in front.
TEST_F(LinuxKeyboardEventsTest, HoldsTheNextTextAlsoWhereItHasNoProcess) {
    EXPECT_TRUE(keyboard->hold(first));
    post(u"one ", std::nullopt);
    post(u"\xD83D\xDE00 ", std::nullopt);
    post(u"two", first);
    post(u"three", second);
    ASSERT_TRUE(handsOver(1));
    EXPECT_EQ(typing.texts[0].process, second);
    keyboard->release(first, 7);
    ASSERT_TRUE(handsOver(2));
    EXPECT_EQ(typing.texts[1].process, first);
    EXPECT_EQ(typing.texts[1].characters, U"two");
    EXPECT_TRUE(keyboard->hold(first));
    post(u"four ", std::nullopt);
    post(u"five", std::nullopt);
    keyboard->release(first, 0);
    ASSERT_TRUE(handsOver(3));
    EXPECT_EQ(typing.texts[2].process, std::nullopt);
    EXPECT_EQ(typing.texts[2].characters, U"four five");
}

TEST_F(LinuxKeyboardEventsTest, HoldsSeveralTextsInTheirOrder) {
    EXPECT_EQ(keyboard->hold(first), 0U);
    post(u"one ", first);
    EXPECT_EQ(keyboard->hold(first), 4U);
    post(u"\xD83D\xDE00 ", std::nullopt);
    post(u"two ", std::nullopt);
    EXPECT_EQ(keyboard->hold(first), 11U);
    keyboard->release(first, 4);
    ASSERT_TRUE(handsOver(1));
    EXPECT_EQ(typing.texts[0].characters, U"😀 two ");
    // The last hold ended before a text was posted.
    post(u"three", first);
    EXPECT_TRUE(handsOver(2));
}

TEST_F(LinuxKeyboardEventsTest, HoldsNoTextWithoutAProcessForAHoldOfAnotherText) {
    EXPECT_TRUE(keyboard->hold(first));
    post(u"one", first);
    post(u"two", std::nullopt);
    ASSERT_TRUE(handsOver(1));
    EXPECT_EQ(typing.texts[0].characters, U"two");
}

// Text without a process may be for any of them.
TEST_F(LinuxKeyboardEventsTest, KnowsThatTextWithoutAProcessMayBeForAny) {
    post(u"one", std::nullopt);
    EXPECT_TRUE(keyboard->isTypingInto(first));
    ASSERT_TRUE(handsOver(1));
    EXPECT_TRUE(keyboard->isTypingInto(second));
    typing.onDones[0]();
    EXPECT_FALSE(keyboard->isTypingInto(first));
}

TEST_F(LinuxKeyboardEventsTest, HandsHeldTextOverAtTheEnd) {
    EXPECT_TRUE(keyboard->hold(first));
    post(u"last", first);
    keyboard.reset();
    ASSERT_EQ(typing.texts.size(), 1U);
    EXPECT_EQ(typing.texts[0].characters, U"last");
}

TEST_F(LinuxKeyboardEventsTest, HoldsNothingWithoutAMeans) {
    typing.isPresent = false;
    EXPECT_FALSE(keyboard->hold(first));
    EXPECT_FALSE(keyboard->isTypingInto(first));
}

TEST_F(LinuxKeyboardEventsTest, ShapesUnitsIntoCharactersThatCanBeTyped) {
    // The halves of a pair come in two blocks.
    post(u"a\r\nb\tc\u0007d\xD83D", std::nullopt);
    ASSERT_TRUE(handsOver(1));
    post(u"\xDE00 \xDE00", std::nullopt);
    ASSERT_TRUE(handsOver(2));
    EXPECT_EQ(typing.texts[0].characters, U"a b cd");
    EXPECT_EQ(typing.texts[1].characters, U"😀 \uFFFD");
}

TEST_F(LinuxKeyboardEventsTest, KnowsWhoHasTextOnItsWayFromThePostUntilItIsRead) {
    EXPECT_FALSE(keyboard->isTypingInto(first));
    post(u"one", first);
    EXPECT_TRUE(keyboard->isTypingInto(first));
    EXPECT_FALSE(keyboard->isTypingInto(second));
    ASSERT_TRUE(handsOver(1));
    post(u"two", first);
    ASSERT_TRUE(handsOver(2));
    typing.onDones[0]();
    EXPECT_TRUE(keyboard->isTypingInto(first));
    typing.onDones[1]();
    EXPECT_FALSE(keyboard->isTypingInto(first));
}

TEST_F(LinuxKeyboardEventsTest, HandsTheLastRunsOverAtItsEnd) {
    post(u"last \xD83D", first);
    keyboard.reset();
    ASSERT_EQ(typing.texts.size(), 1U);
    EXPECT_EQ(typing.texts[0].characters, U"last \uFFFD");
}

TEST_F(LinuxKeyboardEventsTest, MayEndBeforeItsTextIsRead) {
    post(u"one", first);
    ASSERT_TRUE(handsOver(1));
    keyboard.reset();
    typing.onDones[0]();
}

}  // namespace

}  // namespace tarvik::tests
