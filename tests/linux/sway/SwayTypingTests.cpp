// SPDX-License-Identifier: MIT

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/linux/sway/SwayFixture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using platform::noErr;

class SwayTypingInto : public SwayFixture, public testing::TestWithParam<X11Target::Kind> {
  protected:
    X11Target target{GetParam(), mainQueue};

    void SetUp() override { ASSERT_TRUE(comesToFront(target)); }
};

TEST_P(SwayTypingInto, IsExactOverTheCorpus) {
    typeCorpus(target);
}

TEST_P(SwayTypingInto, IsExactWhileTheHotkeyIsHeld) {
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    pressHold();
    ASSERT_TRUE(becomes(recorder, "P1"));
    typeCorpus(target);
    EXPECT_EQ(recorder.events, "P1");
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1"));
}

TEST_P(SwayTypingInto, KeepsTheFieldAfterAltWentDownAndUpAlone) {
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    std::string expected;
    for (int i = 0; i < 4; ++i) {
        recorder.events.clear();
        pressHold();
        ASSERT_TRUE(becomes(recorder, "P1"));
        if (i % 2 == 0) {
            releaseHold();
        } else {
            user.release(SwayUser::altKey);
            user.release(SwayUser::spaceKey);
        }
        ASSERT_TRUE(becomes(recorder, "P1R1"));
        type("after " + std::to_string(i) + " ", target.process());
        expected += "after " + std::to_string(i) + " ";
        ASSERT_TRUE(becomes(target, expected));
    }
}

TEST_P(SwayTypingInto, IsExactOverTwoThousandCharacters) {
    typeTwoThousandCharacters(target, 90s);
}

INSTANTIATE_TEST_SUITE_P(Toolkits, SwayTypingInto, typingToolkits(), toolkitName);

class SwayTyping : public SwayFixture, public testing::Test {};

TEST_F(SwayTyping, GoesToTheWindowWhereTheRecordingBegan) {
    typeIntoFirstOfTwoWindows();
}

TEST_F(SwayTyping, GivesTheFocusBack) {
    typeBehindAnotherProgram();
}

TEST_F(SwayTyping, ReachesAnotherWorkspaceAndComesBack) {
    X11Target first(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(first));
    user.run("workspace second");
    ASSERT_TRUE(mainQueue.runUntil([&] { return !input->frontmostProcess(); }));
    type("far away", first.process());
    EXPECT_TRUE(becomes(first, "far away"));
    EXPECT_TRUE(mainQueue.runUntil([&] { return !input->frontmostProcess(); }));
    user.run("workspace 1");
}

// Sway would end the program if all keys waited for it at once.
TEST_F(SwayTyping, AProgramThatReadsNothingForAWhileGetsEverything) {
    const TemporaryFolder folder;
    const std::string file = (folder.path() / "text").string();
    const auto content = [&file] {
        std::ifstream stream(file, std::ios::binary);
        return std::string{std::istreambuf_iterator<char>(stream), {}};
    };
    TestProcess terminal(
        {"foot", "sh", "-c", "stty raw -echo; : > '" + file + "'; exec cat >> '" + file + "'"});
    ASSERT_TRUE(mainQueue.runUntil([&] {
        return std::filesystem::exists(file) && input->frontmostProcess() == terminal.identifier();
    }));
    terminal.send(SIGSTOP);
    std::string text;
    while (text.size() < 20000) {
        text += "the quick brown fox jumps over the lazy dog and ";
    }
    type(text, terminal.identifier());
    mainQueue.runFor(1500ms);
    EXPECT_TRUE(input->isTypingInto(terminal.identifier()));
    terminal.send(SIGCONT);
    EXPECT_TRUE(mainQueue.runUntil([&] { return content() == text; }, 40s));
    EXPECT_EQ(content().size(), text.size());
}

TEST_F(SwayTyping, TextThatIsLeftAtTheEndIsTyped) {
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    typeLastWords(target);
}

}  // namespace

}  // namespace tarvik::tests
