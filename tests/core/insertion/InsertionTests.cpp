// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "insertion/InsertionStep.h"
#include "insertion/Pasteboard.h"
#include "tests/support/SimulatedPlatform.h"

namespace tarvik {
namespace {

constexpr platform::ProcessIdentifier editor = 4711;

class Insertion : public testing::Test {
  protected:
    void insert(const std::string& text, const InsertionTarget& target) {
        insertPiece(text, target, platform.accessibility(), platform.keyboardEvents());
    }
    void type(const std::string& text,
              std::optional<platform::ProcessIdentifier> process = editor) {
        Pasteboard::typeString(text, process, platform.keyboardEvents());
    }
    std::vector<simulated::SimulatedKeyboard::Post>& posts() {
        return platform.keyboardEvents().posts;
    }
    /// The texts of the key-down events.
    std::vector<std::u16string> presses() {
        std::vector<std::u16string> texts;
        for (const auto& post : posts()) {
            if (post.isDown) {
                texts.push_back(post.text);
            }
        }
        return texts;
    }

    simulated::SimulatedPlatform platform;
    std::shared_ptr<simulated::SimulatedElement> element =
        std::make_shared<simulated::SimulatedElement>();
};

TEST_F(Insertion, EmptyPieceWritesAndTypesNothing) {
    insert("", {element, editor});
    EXPECT_TRUE(element->attempts.empty());
    EXPECT_TRUE(posts().empty());
    EXPECT_TRUE(platform.journal().lines().empty());
}

TEST_F(Insertion, SuccessfulWriteTypesNothing) {
    element->text = "Dear John";
    element->selectionStart = 5;
    element->selectionLength = 4;
    insert("Mary", {element, editor});
    EXPECT_EQ(element->text, "Dear Mary");
    EXPECT_TRUE(posts().empty());
    EXPECT_TRUE(platform.keyboardEvents().sourceStates.empty());
}

TEST_F(Insertion, FailedWriteTypesTheTextIntoTheProcess) {
    for (const platform::AXError status :
         {platform::axErrorFailure, platform::axErrorCannotComplete,
          platform::axErrorAttributeUnsupported, platform::AXError{1}}) {
        posts().clear();
        element->writeStatus = status;
        insert(" hello", {element, editor});
        EXPECT_EQ(platform.keyboardEvents().typed(editor), u" hello");
    }
    EXPECT_EQ(element->attempts, std::vector<std::string>(4, " hello"));
    EXPECT_EQ(element->text, "");
}

TEST_F(Insertion, WithoutAnElementTheTextIsTypedIntoTheProcess) {
    insert("hello", {nullptr, editor});
    EXPECT_EQ(platform.keyboardEvents().typed(editor), u"hello");
    EXPECT_TRUE(platform.accessibility().writes.empty());
}

TEST_F(Insertion, WithoutElementAndProcessTheTextIsTypedThroughTheHidTap) {
    insert("hello", {nullptr, std::nullopt});
    ASSERT_EQ(posts().size(), 2U);
    for (const auto& post : posts()) {
        EXPECT_EQ(post.process, std::nullopt);
        EXPECT_EQ(post.tap, 0);
    }
    EXPECT_EQ(platform.keyboardEvents().typed(std::nullopt), u"hello");
}

TEST_F(Insertion, FailedWriteWithoutAProcessTypesThroughTheHidTap) {
    element->writeStatus = platform::axErrorFailure;
    insert("hello", {element, std::nullopt});
    EXPECT_EQ(platform.keyboardEvents().typed(std::nullopt), u"hello");
}

TEST_F(Insertion, LogsNothing) {
    element->writeStatus = platform::axErrorFailure;
    insert("hello", {element, editor});
    EXPECT_TRUE(platform.log().lines().empty());
}

TEST_F(Insertion, AKeyGoesDownAndUpWithTheSameTextOnVirtualKeyZero) {
    type("hello");
    ASSERT_EQ(posts().size(), 2U);
    EXPECT_TRUE(posts()[0].isDown);
    EXPECT_FALSE(posts()[1].isDown);
    for (const auto& post : posts()) {
        EXPECT_EQ(post.process, editor);
        EXPECT_EQ(post.tap, std::nullopt);
        EXPECT_EQ(post.virtualKey, 0);
        EXPECT_EQ(post.text, u"hello");
    }
}

TEST_F(Insertion, AllPressesShareOneSourceOfTheCombinedSession) {
    type(std::string(45, 'x'));
    EXPECT_EQ(platform.keyboardEvents().sourceStates, std::vector<int>({0}));
}

TEST_F(Insertion, EmptyTextPostsNothing) {
    type("");
    EXPECT_TRUE(posts().empty());
}

TEST_F(Insertion, TwentyUnitsAreOnePressAndTwentyOneAreTwo) {
    type(std::string(20, 'x'));
    EXPECT_EQ(presses(), std::vector<std::u16string>({std::u16string(20, u'x')}));
    posts().clear();
    type(std::string(21, 'x'));
    EXPECT_EQ(posts().size(), 4U);
    EXPECT_EQ(presses(),
              std::vector<std::u16string>({std::u16string(20, u'x'), std::u16string(1, u'x')}));
}

TEST_F(Insertion, FortyFiveUnitsAreThreePresses) {
    type(std::string(45, 'x'));
    const auto texts = presses();
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_EQ(texts[0].size(), 20U);
    EXPECT_EQ(texts[1].size(), 20U);
    EXPECT_EQ(texts[2].size(), 5U);
}

TEST_F(Insertion, EmojiAtUnitsTwentyAndTwentyOneIsDividedBetweenTwoPresses) {
    type("xxxxxxxxxxxxxxxxxxx\xF0\x9F\x98\x80");
    EXPECT_EQ(presses(), std::vector<std::u16string>(
                             {std::u16string(19, u'x') + u'\xD83D', std::u16string(1, u'\xDE00')}));
    EXPECT_EQ(posts()[0].text, posts()[1].text);
}

TEST_F(Insertion, UnitsAreCountedNotBytes) {
    std::string cyrillic;
    for (int i = 0; i < 20; ++i) {
        cyrillic += "ж";
    }
    type(cyrillic);
    EXPECT_EQ(presses(), std::vector<std::u16string>({std::u16string(20, u'ж')}));
}

TEST_F(Insertion, RefusedPressIsSkippedAndTheNextOnesAreTyped) {
    // A refused event skips only its own press: here the key-up of the first press and the key-down
    // of the third.
    platform.keyboardEvents().refusedEvents = {2, 5};
    type("aaaaaaaaaaaaaaaaaaaabbbbbbbbbbbbbbbbbbbbccccccccccccccccccccd");
    EXPECT_EQ(presses(),
              std::vector<std::u16string>({std::u16string(20, u'b'), std::u16string(1, u'd')}));
    EXPECT_EQ(posts().size(), 4U);
}

TEST_F(Insertion, KeyUpIsNotMadeForAKeyDownThatFailed) {
    platform.keyboardEvents().refusedEvents = {1};
    type("hello");
    EXPECT_EQ(platform.keyboardEvents().createdEvents, 1);
    EXPECT_TRUE(posts().empty());
}

TEST_F(Insertion, EventsAreRequestedEvenWithoutASource) {
    platform.keyboardEvents().isSourceRefused = true;
    type("hello");
    EXPECT_EQ(platform.keyboardEvents().typed(editor), u"hello");
}

}  // namespace
}  // namespace tarvik
