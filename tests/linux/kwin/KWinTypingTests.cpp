// SPDX-License-Identifier: MIT

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/linux/kwin/KWinFixture.h"

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

class KWinTyping : public KWinFixture {};

class KWinTypingInto : public KWinTyping, public testing::WithParamInterface<X11Target::Kind> {
  protected:
    X11Target target{GetParam(), mainQueue};

    void SetUp() override { ASSERT_TRUE(comesToFront(target)); }
};

TEST_P(KWinTypingInto, IsExactOverTheCorpus) {
    typeCorpus(target);
}

TEST_P(KWinTypingInto, IsExactWhileTheHotkeyIsHeld) {
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    pressHold();
    ASSERT_TRUE(becomes(recorder, "P1"));
    typeCorpus(target);
    EXPECT_EQ(recorder.events, "P1");
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1"));
}

TEST_P(KWinTypingInto, IsExactOverTwoThousandCharacters) {
    typeTwoThousandCharacters(target, 30s);
}

INSTANTIATE_TEST_SUITE_P(Toolkits, KWinTypingInto, typingToolkits(), toolkitName);

TEST_F(KWinTyping, GoesToTheWindowWhereTheRecordingBegan) {
    typeIntoFirstOfTwoWindows();
}

TEST_F(KWinTyping, GivesTheFocusBack) {
    typeBehindAnotherProgram();
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
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    typeLastWords(target);
}

}  // namespace

}  // namespace tarvik::tests
