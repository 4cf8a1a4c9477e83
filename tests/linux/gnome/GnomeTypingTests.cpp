// SPDX-License-Identifier: MIT

#include "tests/linux/gnome/GnomeFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

// Every kind of script, combining characters, right to left, and emoji of several characters.
constexpr std::string_view corpus[] = {
    "The quick brown fox: 0123456789 !\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~ ABC xyz",
    "Zażółć gęślą jaźń – „tak”, Łódź, ŻÓŁĆ…",
    "Größe, Übermut, ärgerlich – „Ja, heiß!“",
    "Tiếng Việt có dấu; Tie\u0302\u0301ng",
    "Съешь же ещё этих мягких французских булок, да выпей чаю.",
    "Γαζέες καὶ μυρτιὲς δὲν θὰ βρῶ πιὰ",
    "مرحبا بالعالم، كيف حالك؟",
    "שלום עולם, מה שלומך?",
    "こんにちは世界、日本語のテキストです。",
    "안녕하세요 세계",
    "Fine 👍🏽 family 👨‍👩‍👧‍👦 flag 🇵🇱 ❤️ end",
};

class GnomeTypingInto : public GnomeFixture, public testing::TestWithParam<X11Target::Kind> {
  protected:
    void typeCorpus(const X11Target& target) {
        std::string expected;
        for (const std::string_view text : corpus) {
            type(text, target.process());
            expected += text;
            ASSERT_TRUE(becomes(target, expected));
        }
    }
};

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
    X11Target target(GetParam(), mainQueue);
    std::string text;
    while (text.size() < 2000) {
        text += "Zażółć gęślą jaźń, the quick brown fox. ";
    }
    const auto start = std::chrono::steady_clock::now();
    type(text, target.process());
    ASSERT_TRUE(becomes(target, text, 20s));
    RecordProperty("milliseconds",
                   static_cast<int>((std::chrono::steady_clock::now() - start) / 1ms));
}

INSTANTIATE_TEST_SUITE_P(Toolkits, GnomeTypingInto,
                         testing::Values(X11Target::Kind::gtk3Entry, X11Target::Kind::gtk4Text,
                                         X11Target::Kind::qt6Entry, X11Target::Kind::qt6Text),
                         [](const auto& kind) {
                             return nameOf(kind.param) + std::to_string(kind.index);
                         });

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
    X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    type("the last words, żółć", target.process());
    input.reset();
    EXPECT_TRUE(becomes(target, "the last words, żółć"));
    EXPECT_EQ(GnomeUser::engine(), "xkb:us::eng");
    input.emplace(mainQueue, log);
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
