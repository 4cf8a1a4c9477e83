// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/kwin/KWinTypist.h"
#include "platform/linux/loop/PollLoop.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::FocusedField;
using linuxdesktop::KWinTypist;
using linuxdesktop::PollLoop;
using linuxdesktop::WindowFocus;

constexpr platform::ProcessIdentifier process = 1;
constexpr std::int64_t window = 7;

/// A session with one window of the process, and another one that may have the keyboard.
class ScriptedSession final : public WindowFocus, public FocusedField {
  public:
    explicit ScriptedSession(PollLoop& loop) : loop_(loop) {}

    void ask(std::function<void()> onKnown) override { loop_.post(std::move(onKnown)); }
    Window front() const override {
        return isInFront ? Window{window, process} : Window{window + 1, process + 1};
    }
    std::uint64_t changeCount() const override { return changes; }
    std::int64_t windowOf(std::optional<platform::ProcessIdentifier> asked,
                          std::int64_t) const override {
        return hasWindow && asked == process ? window : 0;
    }
    void activate(std::int64_t) override { isInFront = true; }
    void giveBack() override {
        steps.push_back("give back");
        isInFront = false;
    }

    void request(OnReady onReady) override {
        loop_.post([this, onReady = std::move(onReady)] {
            isInFront = isInFront && !std::exchange(losesFocusOnce, false);
            onReady(refusal);
        });
    }
    void commit(std::u32string_view text, std::function<void()> onDone) override {
        steps.push_back(std::string(isInFront ? "" : "elsewhere ") +
                        std::string(text.begin(), text.end()));
        loop_.post([this, onDone = std::move(onDone)] {
            changes += changesAfterCommit;
            onDone();
        });
    }

    bool isInFront = true;
    bool hasWindow = true;
    bool losesFocusOnce = false;
    std::uint64_t changesAfterCommit = 0;
    std::string refusal;
    std::uint64_t changes = 0;
    std::vector<std::string> steps;

  private:
    PollLoop& loop_;
};

class KWinTypistTest : public testing::Test {
  protected:
    void type(const std::u32string& text) {
        typist.type({process, text}, 0, [&] { ++typedCount; });
    }
    void run() {
        typist.whenIdle([&] { loop.quit(); });
        loop.run();
    }
    std::vector<std::string> lines() const { return log.lines(); }

    RecordingLog log;
    PollLoop loop;
    ScriptedSession session{loop};
    int typedCount = 0;
    KWinTypist typist{session, session, loop, log};
};

TEST_F(KWinTypistTest, PutsTextsIntoTheFieldOneAfterTheOther) {
    type(U"one ");
    type(U"two");
    run();
    EXPECT_EQ(session.steps, (std::vector<std::string>{"one ", "two"}));
    EXPECT_EQ(typedCount, 2);
    EXPECT_TRUE(lines().empty());
}

TEST_F(KWinTypistTest, BringsTheWindowToTheFrontAndGivesTheKeyboardBack) {
    session.isInFront = false;
    type(U"text");
    run();
    EXPECT_EQ(session.steps, (std::vector<std::string>{"text", "give back"}));
}

TEST_F(KWinTypistTest, LooksAtTheFocusAgainWhenAFieldIsReady) {
    session.losesFocusOnce = true;
    type(U"text");
    run();
    EXPECT_EQ(session.steps, (std::vector<std::string>{"text", "give back"}));
}

TEST_F(KWinTypistTest, TellsOfATextThatMayHaveGoneElsewhereAndTypesItOnce) {
    session.changesAfterCommit = 2;
    type(U"somewhere");
    run();
    EXPECT_EQ(session.steps, (std::vector<std::string>{"somewhere"}));
    EXPECT_EQ(log.linesWith("typed text may have gone to another window, since the keyboard did "
                            "(9 characters)")
                  .size(),
              1U);
}

TEST_F(KWinTypistTest, TellsOfATextThatNoFieldTakes) {
    session.refusal = "no text field has the keyboard";
    type(U"lost");
    run();
    EXPECT_TRUE(session.steps.empty());
    EXPECT_EQ(typedCount, 1);
    EXPECT_EQ(
        log.linesWith("typed text not delivered: no text field has the keyboard (4 characters)")
            .size(),
        1U);
}

TEST_F(KWinTypistTest, TypesNothingForAProcessWithoutAWindow) {
    session.isInFront = false;
    session.hasWindow = false;
    type(U"lost");
    run();
    EXPECT_TRUE(session.steps.empty());
    EXPECT_EQ(
        log.linesWith("typed text not delivered: process 1 has no window (4 characters)").size(),
        1U);
}

}  // namespace

}  // namespace tarvik::tests
