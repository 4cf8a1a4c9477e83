// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/wayland/VirtualTypist.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

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
    void activate(std::int64_t) override {}
    void giveBack() override {}

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
        auto opened = WaylandConnection::open();
        ASSERT_TRUE(opened);
        const std::unique_ptr<WaylandConnection> connection = std::move(opened).value();
        std::unique_ptr<VirtualTypist> typist;
        connection->attach(
            loop,
            [&] {
                typist = std::make_unique<VirtualTypist>(*connection, focus, loop, log);
                typist->type({process, text}, 0, [&] {
                    ++typedCount;
                    loop.quit();
                });
                if (!focus.answers) {
                    loop.quit();
                }
            },
            [&](const std::string& reason) {
                ADD_FAILURE() << reason;
                loop.quit();
            });
        loop.run([&] { connection->flush(); });
    }

    RecordingLog log;
    PollLoop loop;
    ScriptedFocus focus{loop};
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
