// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/wayland/WaylandSession.h"
#include "tests/linux/sway/SwayUser.h"
#include "tests/linux/x11/X11Target.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::InputSession;
using linuxdesktop::PollLoop;
using linuxdesktop::WaylandSession;
using linuxdesktop::WindowFocus;

/// A session whose loop runs only inside runUntil(), so that what the compositor tells meanwhile
/// is read late.
class WaylandSessionTest : public testing::Test {
  protected:
    void SetUp() override {
        bool isReady = false;
        auto opened = WaylandSession::open(loop, log,
                                           {{},
                                            [&](const std::string& refusal) {
                                                EXPECT_EQ(refusal, "");
                                                isReady = true;
                                            },
                                            [](const std::string& reason) { FAIL() << reason; },
                                            [](const std::string& reason) { FAIL() << reason; }},
                                           [this](std::int64_t window) { front = window; });
        ASSERT_TRUE(opened);
        session = std::move(opened).value();
        runUntil([&] { return isReady; });
    }

    void runUntil(const std::function<bool()>& condition) {
        loop.run([&] {
            session->flush();
            if (condition()) {
                loop.quit();
            }
        });
    }
    std::int64_t beginRecording(platform::ProcessIdentifier process) {
        const std::int64_t choice = WindowFocus::newWindowNumber();
        static_cast<WaylandSession&>(*session).beginRecording(choice, process);
        return choice;
    }
    void type(std::u32string text, std::int64_t choice,
              std::optional<platform::ProcessIdentifier> process) {
        bool isTyped = false;
        session->typist()->type({process, std::move(text)}, choice, [&] { isTyped = true; });
        runUntil([&] { return isTyped; });
    }
    bool becomes(const X11Target& target, const std::string& text) {
        return mainQueue.runUntil([&] { return target.text() == text; });
    }

    RealTimeQueue mainQueue;
    RecordingLog log;
    SwayUser user;
    PollLoop loop;
    std::unique_ptr<InputSession> session;
    std::int64_t front = 0;
};

// The accessibility bus may be faster than the compositor's socket.
TEST_F(WaylandSessionTest, TextGoesToTheNewProgramWhoseWindowIsNotKnownYet) {
    const X11Target first(X11Target::Kind::gtk3Entry, mainQueue);
    runUntil([&] { return front != 0; });
    type(U"one", beginRecording(first.process()), first.process());
    ASSERT_TRUE(becomes(first, "one"));
    const X11Target second(X11Target::Kind::gtk3Entry, mainQueue);
    type(U"two", beginRecording(second.process()), second.process());
    EXPECT_TRUE(becomes(second, "two"));
    EXPECT_EQ(first.text(), "one");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(WaylandSessionTest, TextWithoutAProcessGoesToTheNewWindowThatIsNotKnownYet) {
    const X11Target first(X11Target::Kind::gtk3Entry, mainQueue);
    runUntil([&] { return front != 0; });
    const X11Target second(X11Target::Kind::gtk3Entry, mainQueue);
    type(U"two", beginRecording(0), std::nullopt);
    EXPECT_TRUE(becomes(second, "two"));
    EXPECT_EQ(first.text(), "");
}

// The accessibility bus may be slower than the compositor, too.
TEST_F(WaylandSessionTest, TextKeepsItsWindowWhenAnotherProcessIsTakenForItsOwner) {
    const X11Target first(X11Target::Kind::gtk3Entry, mainQueue);
    runUntil([&] { return front != 0; });
    const std::int64_t choice = beginRecording(first.process());
    beginRecording(first.process() + 1);
    type(U"still here", choice, first.process());
    EXPECT_TRUE(becomes(first, "still here"));
    EXPECT_TRUE(log.lines().empty());
}

}  // namespace

}  // namespace tarvik::tests
