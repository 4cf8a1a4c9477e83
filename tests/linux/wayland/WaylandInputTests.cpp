// SPDX-License-Identifier: MIT

// Any compositor with the protocols of wlroots, of which nothing else is known.

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "tests/linux/sway/SwayFixture.h"
#include "tests/linux/system/SilentBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TemporaryVariables.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

// Outlives the worker.
class AccessibilityLog {
  protected:
    RecordingLog accessibilityLog;
};

class WaylandFixture : private AccessibilityLog, public SwayFixture {
  protected:
    WaylandFixture()
        : SwayFixture(std::make_shared<linuxdesktop::AccessibilityWorker>(accessibilityLog)) {}
};

class WaylandTypingInto : public WaylandFixture, public testing::TestWithParam<X11Target::Kind> {
  protected:
    X11Target target{GetParam(), mainQueue};

    void SetUp() override { ASSERT_TRUE(comesToFront(target)); }
};

TEST_P(WaylandTypingInto, IsExactOverTheCorpus) {
    typeCorpus(target);
    EXPECT_TRUE(log.linesWith("typed text").empty());
}

TEST_P(WaylandTypingInto, IsExactWhileAltIsHeld) {
    user.press(SwayUser::altKey);
    EXPECT_EQ(input->chooseTarget(), target.process());
    typeCorpus(target);
    user.release(SwayUser::altKey);
}

TEST_P(WaylandTypingInto, KeepsTheFieldAfterAltWentDownAndUpAlone) {
    std::string expected;
    for (int i = 0; i < 4; ++i) {
        user.press(SwayUser::altKey);
        EXPECT_EQ(input->chooseTarget(), target.process());
        // The key that goes along with Alt has reached the compositor.
        mainQueue.runFor(50ms);
        user.release(SwayUser::altKey);
        type("after " + std::to_string(i) + " ", target.process());
        expected += "after " + std::to_string(i) + " ";
        ASSERT_TRUE(becomes(target, expected));
    }
}

INSTANTIATE_TEST_SUITE_P(Toolkits, WaylandTypingInto, typingToolkits(), toolkitName);

class WaylandTyping : public WaylandFixture, public testing::Test {
  protected:
    const TemporaryFolder folder;

    // A program that says nothing to the accessibility bus. It is in front when `isInFront` holds.
    void startTerminal(const std::function<bool()>& isInFront) {
        const std::string file = terminalFile();
        terminal.emplace(std::vector<std::string>{
            "foot", "sh", "-c", "stty raw -echo; : > '" + file + "'; exec cat >> '" + file + "'"});
        ASSERT_TRUE(
            mainQueue.runUntil([&] { return std::filesystem::exists(file) && isInFront(); }));
    }
    std::string terminalFile() const { return (folder.path() / "text").string(); }
    bool terminalBecomes(const std::string& text) const { return terminalText() == text; }
    std::string terminalText() const {
        std::ifstream stream(terminalFile(), std::ios::binary);
        return std::string{std::istreambuf_iterator<char>(stream), {}};
    }

    std::optional<TestProcess> terminal;
};

TEST_F(WaylandTyping, EachChoiceIsOneLineWithItsReason) {
    for (const char* line :
         {"hotkeys not by Sway: SWAYSOCK is not set",
          "hotkeys not by Wayland: the compositor offers none, but its own bindings can call the "
          "actions press and release",
          "typing not by a virtual keyboard in Sway: SWAYSOCK is not set",
          "typing by a virtual keyboard in Wayland: the compositor offers it",
          "the front window not by Sway: SWAYSOCK is not set",
          "the front window by Wayland and AT-SPI: the compositor offers it"}) {
        EXPECT_EQ(log.linesWith(line).size(), 1U) << line;
    }
}

TEST_F(WaylandTyping, GoesToTheWindowWhereTheRecordingBegan) {
    typeIntoFirstOfTwoWindows();
}

TEST_F(WaylandTyping, GivesTheFocusBack) {
    X11Target first(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(first));
    X11Target second(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(mainQueue.runUntil([&] { return input->frontmostProcess() == second.process(); }));
    type("behind", first.process());
    EXPECT_TRUE(becomes(first, "behind"));
    EXPECT_TRUE(mainQueue.runUntil([&] { return input->frontmostProcess() == second.process(); }));
}

TEST_F(WaylandTyping, ReachesTheWindowOfAProgramThatAccessibilityDoesNotKnow) {
    X11Target known(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(known));
    startTerminal([&] { return !input->frontmostProcess(); });
    ASSERT_EQ(input->chooseTarget(), std::nullopt);
    type("Zażółć 😀 ", std::nullopt);
    EXPECT_TRUE(mainQueue.runUntil([&] { return terminalBecomes("Zażółć 😀 "); }));
    X11Target other(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(mainQueue.runUntil([&] { return input->frontmostProcess() == other.process(); }));
    type("too", std::nullopt);
    EXPECT_TRUE(mainQueue.runUntil([&] { return terminalBecomes("Zażółć 😀 too"); }));
    EXPECT_EQ(terminalText(), "Zażółć 😀 too");
    EXPECT_EQ(known.text(), "");
    EXPECT_EQ(other.text(), "");
}

TEST_F(WaylandTyping, TellsOfATextWhoseWindowIsGone) {
    X11Target known(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(known));
    startTerminal([&] { return !input->frontmostProcess(); });
    ASSERT_EQ(input->chooseTarget(), std::nullopt);
    terminal->kill();
    ASSERT_TRUE(mainQueue.runUntil([&] { return input->frontmostProcess() == known.process(); }));
    type("nowhere", std::nullopt);
    EXPECT_TRUE(mainQueue.runUntil([&] {
        return log.hasLineWith("typed text not delivered: the window is gone (7 characters)");
    }));
    EXPECT_EQ(known.text(), "");
}

// The session might as well be KWin's or GNOME's.
TEST_F(WaylandTyping, IsPossibleWhileTheSessionBusIsSilent) {
    input.reset();
    {
        TemporaryVariables variables;
        const SilentBus silent(folder.path() / "bus");
        variables.set("DBUS_SESSION_BUS_ADDRESS", silent.address());
        openInput();
    }
    EXPECT_TRUE(input->canType());
    X11Target known(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(known));
    type("in a field, żółć", known.process());
    EXPECT_TRUE(becomes(known, "in a field, żółć"));
    startTerminal([&] { return !input->frontmostProcess(); });
    ASSERT_EQ(input->chooseTarget(), std::nullopt);
    type("in a terminal, żółć", std::nullopt);
    EXPECT_TRUE(mainQueue.runUntil([&] { return terminalBecomes("in a terminal, żółć"); }));
}

TEST_F(WaylandTyping, TextThatIsLeftAtTheEndIsTyped) {
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    typeLastWords(target);
}

}  // namespace

}  // namespace tarvik::tests
