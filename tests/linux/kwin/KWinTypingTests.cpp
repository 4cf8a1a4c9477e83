// SPDX-License-Identifier: MIT

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/linux/kwin/KWinFixture.h"
#include "tests/linux/sway/TypingCorpus.h"
#include "tests/linux/x11/X11Target.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using platform::noErr;

std::string settings() {
    std::ifstream file(std::string(std::getenv("XDG_CONFIG_HOME")) + "/kwinrc", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool isInputMethodOurs() {
    return settings().find("tarvik-dictate-input-method") != std::string::npos;
}

class KWinTyping : public KWinFixture {
  protected:
    bool becomes(const X11Target& target, std::string_view text,
                 std::chrono::milliseconds timeout = 5s) {
        const bool holds = mainQueue.runUntil([&] { return target.text() == text; }, timeout);
        EXPECT_EQ(target.text(), text);
        if (!holds) {
            for (const std::string& line : log.lines()) {
                ADD_FAILURE() << line;
            }
        }
        return holds;
    }
    bool comesToFront(const X11Target& target) {
        return mainQueue.runUntil([&] { return input->chooseTarget() == target.process(); });
    }
};

class KWinTypingInto : public KWinTyping, public testing::WithParamInterface<X11Target::Kind> {
  protected:
    X11Target target{GetParam(), mainQueue};

    void SetUp() override { ASSERT_TRUE(comesToFront(target)); }

    void typeCorpus() {
        std::string expected;
        for (const std::string_view text : typingCorpus) {
            type(text, target.process());
            expected += text;
            ASSERT_TRUE(becomes(target, expected));
        }
    }
};

TEST_P(KWinTypingInto, IsExactOverTheCorpus) {
    typeCorpus();
}

TEST_P(KWinTypingInto, IsExactWhileTheHotkeyIsHeld) {
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    pressHold();
    ASSERT_TRUE(KWinFixture::becomes(recorder, "P1"));
    typeCorpus();
    EXPECT_EQ(recorder.events, "P1");
    releaseHold();
    EXPECT_TRUE(KWinFixture::becomes(recorder, "P1R1"));
}

TEST_P(KWinTypingInto, IsExactOverTwoThousandCharacters) {
    std::string text;
    while (text.size() < 2000) {
        text += "Zażółć gęślą jaźń, the quick brown fox. ";
    }
    type(text, target.process());
    ASSERT_TRUE(becomes(target, text, 30s));
}

INSTANTIATE_TEST_SUITE_P(Toolkits, KWinTypingInto,
                         testing::Values(X11Target::Kind::gtk3Entry, X11Target::Kind::gtk4Text,
                                         X11Target::Kind::qt6Entry, X11Target::Kind::qt6Text),
                         [](const auto& kind) {
                             return nameOf(kind.param) + std::to_string(kind.index);
                         });

TEST_F(KWinTyping, GoesToTheWindowWhereTheRecordingBegan) {
    X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    target.openSecondWindow(mainQueue);
    type("for the first window", target.process());
    EXPECT_TRUE(becomes(target, "for the first window"));
    EXPECT_EQ(target.textOfSecondWindow(), "");
}

TEST_F(KWinTyping, GivesTheFocusBack) {
    X11Target first(X11Target::Kind::gtk3Entry, mainQueue);
    X11Target second(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(second));
    type("behind", first.process());
    EXPECT_TRUE(becomes(first, "behind"));
    EXPECT_TRUE(comesToFront(second));
}

TEST_F(KWinTyping, HasTheInputMethodOnlyForAWhile) {
    X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    const std::string before = settings();
    EXPECT_FALSE(isInputMethodOurs());
    type("text", target.process());
    EXPECT_TRUE(becomes(target, "text"));
    EXPECT_TRUE(isInputMethodOurs());
    EXPECT_TRUE(mainQueue.runUntil([&] { return !isInputMethodOurs(); }, 8s));
    EXPECT_EQ(settings(), before);
    type(" again", target.process());
    EXPECT_TRUE(becomes(target, "text again"));
    input.reset();
    EXPECT_EQ(settings(), before);
}

TEST_F(KWinTyping, LeavesTheUsersInputMethodAlone) {
    X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    const std::string path = std::string(std::getenv("XDG_CONFIG_HOME")) + "/kwinrc";
    const std::string before = settings();
    const std::string own = "[Wayland]\nInputMethod=/usr/share/applications/own.desktop\n";
    std::ofstream(path, std::ios::trunc) << own;
    type("text", target.process());
    EXPECT_TRUE(mainQueue.runUntil([&] {
        return log.hasLineWith(
            "typed text not delivered: the input method is the user's own: "
            "/usr/share/applications/own.desktop (4 characters)");
    }));
    EXPECT_EQ(settings(), own);
    EXPECT_EQ(target.text(), "");
    std::ofstream(path, std::ios::trunc) << before;
}

TEST_F(KWinTyping, TextThatIsLeftAtTheEndIsTyped) {
    X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    type("the last words, żółć", target.process());
    input.reset();
    EXPECT_TRUE(becomes(target, "the last words, żółć"));
}

}  // namespace

}  // namespace tarvik::tests
