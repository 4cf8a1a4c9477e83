// SPDX-License-Identifier: MIT

#include "tests/linux/gnome/GnomeFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

class GnomeTypingInto : public GnomeFixture, public testing::TestWithParam<X11Target::Kind> {};

TEST_P(GnomeTypingInto, IsExactOverTheCorpus) {
    X11Target target(GetParam(), mainQueue);
    typeCorpus(target);
    EXPECT_TRUE(returnsToLayout());
}

TEST_P(GnomeTypingInto, IsExactWhileTheHotkeyIsHeld) {
    HotKeyRecorder recorder(input->eventManager());
    add(recorder, hold, 1);
    X11Target target(GetParam(), mainQueue);
    press(hold);
    ASSERT_TRUE(becomes(recorder, "P1"));
    typeCorpus(target);
    EXPECT_EQ(recorder.events, "P1");
    release(hold);
    EXPECT_TRUE(becomes(recorder, "P1R1"));
}

// Without a key between Alt down and Alt up, a menu bar takes the text that follows.
TEST_P(GnomeTypingInto, KeepsTheFieldAfterAltWentDownAndUpAlone) {
    HotKeyRecorder recorder(input->eventManager());
    add(recorder, hold, 1);
    X11Target target(GetParam(), mainQueue);
    std::string expected;
    for (int i = 0; i < 4; ++i) {
        recorder.events.clear();
        press(hold);
        ASSERT_TRUE(becomes(recorder, "P1"));
        mainQueue.runFor(200ms);
        release(hold);
        ASSERT_TRUE(becomes(recorder, "P1R1"));
        type("after " + std::to_string(i) + " ", target.process());
        expected += "after " + std::to_string(i) + " ";
        ASSERT_TRUE(becomes(target, expected));
    }
}

TEST_P(GnomeTypingInto, IsExactOverTwoThousandCharacters) {
    const X11Target target(GetParam(), mainQueue);
    typeTwoThousandCharacters(target, 20s);
}

INSTANTIATE_TEST_SUITE_P(Toolkits, GnomeTypingInto, typingToolkits(), toolkitName);

// Pieces of one dictation may come one right after the other.
TEST_P(GnomeTypingInto, LosesNoneOfManyTexts) {
    X11Target target(GetParam(), mainQueue);
    std::string expected;
    for (int i = 0; i < 20; ++i) {
        const std::string text = "text " + std::to_string(i) + ", ";
        type(text, target.process());
        expected += text;
        mainQueue.runFor(std::chrono::milliseconds(i));
    }
    EXPECT_TRUE(becomes(target, expected, 10s));
}

class GnomeTyping : public GnomeFixture, public testing::Test {};

TEST_F(GnomeTyping, TextThatIsLeftAtTheEndIsTyped) {
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    typeLastWords(target);
    EXPECT_EQ(GnomeUser::engine(), "xkb:us::eng");
}

TEST_F(GnomeTyping, TellsOfATextWithoutAField) {
    type("nowhere", std::nullopt);
    EXPECT_TRUE(mainQueue.runUntil([&] {
        return !log.linesWith("not delivered: no text field has the keyboard (7 characters)")
                    .empty();
    }));
    EXPECT_TRUE(returnsToLayout());
}

}  // namespace

}  // namespace tarvik::tests
