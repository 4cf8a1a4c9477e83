// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/wayland/VirtualTypist.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::Deadline;
using linuxdesktop::PollLoop;
using linuxdesktop::VirtualTypist;
using linuxdesktop::WaylandConnection;
using linuxdesktop::WindowFocus;

constexpr platform::ProcessIdentifier process = 1;

// A session whose only window loses the keyboard, and gets it back, when a test says so.
class ScriptedFocus final : public WindowFocus {
  public:
    explicit ScriptedFocus(PollLoop& loop) : loop_(loop) {}

    void ask(std::function<void()> onKnown) override {
        if (!answers) {
            return;
        }
        loop_.post([this, onKnown = std::move(onKnown)] {
            changes_ += ++asked_ == changesBefore ? 2U : 0U;
            onKnown();
        });
    }
    Window front() const override { return {hasWindow ? 7 : 0, hasWindow ? process : 0}; }
    std::uint64_t changeCount() const override { return changes_; }
    std::int64_t windowOf(std::optional<platform::ProcessIdentifier>, std::int64_t) const override {
        return front().number;
    }
    std::int64_t windowOfX(std::uint32_t xNumber) const override {
        return xNumber == unknown ? 0 : xNumber + 100;
    }
    void activate(std::int64_t window) override {
        events += std::to_string(window) + " ";
        onActivated();
    }
    void giveBack() override { events += "back "; }

    static constexpr std::uint32_t unknown = 99;
    std::string events;
    std::function<void()> onActivated = [] {};
    bool answers = true;
    bool hasWindow = true;
    // The number of the question before which the keyboard went away and came back; 0 for never.
    int changesBefore = 0;

  private:
    PollLoop& loop_;
    int asked_ = 0;
    std::uint64_t changes_ = 0;
};

class VirtualTypistTest : public testing::Test {
  protected:
    // Types a text into the only window, to its end. Without answers about the focus the typist
    // ends first.
    void type(const std::u32string& text) {
        open([&] {
            typist->type({process, text}, 0, [&] {
                ++typedCount;
                loop.quit();
            });
            if (!focus.answers) {
                loop.quit();
            }
        });
    }
    // Calls `use` once there is a typist, and runs the loop until it quits.
    void open(const std::function<void()>& use) {
        auto opened = WaylandConnection::open();
        ASSERT_TRUE(opened);
        const std::unique_ptr<WaylandConnection> connection = std::move(opened).value();
        connection->attach(
            loop,
            [&] {
                typist = std::make_unique<VirtualTypist>(*connection, focus, loop, log);
                use();
            },
            [&](const std::string& reason) {
                ADD_FAILURE() << reason;
                loop.quit();
            });
        loop.run([&] { connection->flush(); });
        typist.reset();
    }

    RecordingLog log;
    PollLoop loop;
    ScriptedFocus focus{loop};
    std::unique_ptr<VirtualTypist> typist;
    int typedCount = 0;
};

TEST_F(VirtualTypistTest, SaysNothingAboutATextThatWasTypedWhereItBelongs) {
    type(U"where it belongs");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(VirtualTypistTest, TellsOfKeysThatMayHaveGoneToAnotherWindow) {
    // The first question comes before the keys, and the second one after them.
    focus.changesBefore = 2;
    type(U"somewhere");
    EXPECT_EQ(log.linesWith("typed text may have gone to another window, since the keyboard did "
                            "(9 characters)")
                  .size(),
              1U);
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(VirtualTypistTest, TypesNothingForAProcessWithoutAWindow) {
    focus.hasWindow = false;
    type(U"nowhere");
    EXPECT_EQ(
        log.linesWith("typed text not delivered: process 1 has no window (7 characters)").size(),
        1U);
}

TEST_F(VirtualTypistTest, LendsTheKeyboardBetweenTwoTexts) {
    Deadline lent(loop);
    open([&] {
        const auto onTyped = [this] { focus.events += "typed "; };
        typist->type({process, U"before"}, 0, onTyped);
        typist->lendKeyboard(1);
        typist->type({process, U"after"}, 0, [this, onTyped] {
            onTyped();
            loop.quit();
        });
        focus.onActivated = [&] {
            lent.set(200ms, [this] {
                focus.events += "ends ";
                typist->giveKeyboardBack(1);
            });
        };
    });
    EXPECT_EQ(focus.events, "typed 101 ends back typed ");
}

// The user may have gone elsewhere in the middle of a text.
TEST_F(VirtualTypistTest, LendsTheKeyboardOnceMoreInTheSameLoan) {
    open([this] {
        focus.onActivated = [this] {
            focus.onActivated = [this] {
                typist->giveKeyboardBack(1);
                typist->lendKeyboard(1);
                focus.onActivated = [this] {
                    typist->giveKeyboardBack(1);
                    typist->whenIdle([this] { loop.quit(); });
                };
            };
            typist->lendKeyboard(1);
        };
        typist->lendKeyboard(1);
    });
    EXPECT_EQ(focus.events, "101 101 back 101 back ");
}

TEST_F(VirtualTypistTest, PassesOverAWindowThatTheCompositorDoesNotHave) {
    open([this] {
        typist->lendKeyboard(ScriptedFocus::unknown);
        typist->type({process, U"text"}, 0, [this] { loop.quit(); });
    });
    EXPECT_EQ(focus.events, "");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(VirtualTypistTest, LendsNoKeyboardToAWindowThatNeedsItNoLonger) {
    open([this] {
        typist->lendKeyboard(1);
        typist->lendKeyboard(2);
        typist->giveKeyboardBack(2);
        typist->giveKeyboardBack(1);
        typist->giveKeyboardBack(3);
        typist->type({process, U"text"}, 0, [this] { loop.quit(); });
    });
    EXPECT_EQ(focus.events, "");
}

TEST_F(VirtualTypistTest, TellsOfATextThatIsLeftAtItsEnd) {
    focus.answers = false;
    type(U"left");
    EXPECT_EQ(typedCount, 1);
    EXPECT_EQ(log.linesWith("typed text not delivered: the connection to the compositor ends "
                            "(4 characters)")
                  .size(),
              1U);
}

}  // namespace

}  // namespace tarvik::tests
