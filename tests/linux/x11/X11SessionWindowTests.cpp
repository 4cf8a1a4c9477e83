// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/linux/x11/ForkedWindow.h"
#include "tests/linux/x11/X11SessionWindowTest.h"

namespace tarvik::tests {

namespace {

TEST_F(X11SessionWithWindow, GivesTheFocusBackToWhereverItWas) {
    for (const xcb_window_t earlier : {xcb_window_t{XCB_INPUT_FOCUS_POINTER_ROOT},
                                       xcb_window_t{XCB_INPUT_FOCUS_NONE}, connection->root()}) {
        focus(earlier);
        type(XCB_NONE);
        EXPECT_FALSE(log.hasLineWith("not delivered"));
        EXPECT_EQ(focused()->focus, earlier);
        EXPECT_EQ(focused()->revert_to, XCB_INPUT_FOCUS_NONE);
    }
}

TEST_F(X11SessionWithWindow, WaitsForNoWindowThatIsGone) {
    using namespace std::chrono_literals;
    focus(window);
    type(XCB_NONE);
    answersPings = false;
    bool isTyped = false;
    session.typist().type({getpid(), U"ж"}, XCB_NONE, [&] { isTyped = true; });
    EXPECT_TRUE(runUntil([this] { return !pings.empty(); }, 15s));
    xcb_destroy_window(other->get(), window);
    other->synchronise();
    EXPECT_TRUE(runUntil([&] { return isTyped; }, 15s));
    EXPECT_TRUE(log.hasLineWith(
        "not delivered: its window was closed before its program had read it (1 characters)"));
}

// The X library forgets an announcement that comes while it reads the map. The program would look
// up the later keys in the map before the change.
TEST_F(X11SessionWithWindow, ChangesTheMapOnlyWhenTheProgramHasReadTheKeysBefore) {
    using namespace std::chrono_literals;
    focus(window);
    type(XCB_NONE);
    answersPings = false;
    session.typist().type({getpid(), U"ж"}, XCB_NONE, [] {});
    EXPECT_TRUE(runUntil([this] { return !pings.empty(); }, 15s));
    const int spare = user.keysWithoutSymbol();
    bool isTyped = false;
    session.typist().type({getpid(), U"д"}, XCB_NONE, [&] { isTyped = true; });
    EXPECT_FALSE(runUntil([&] { return user.keysWithoutSymbol() < spare; }, 400ms));
    answersPings = true;
    EXPECT_TRUE(runUntil([&] { return isTyped; }, 15s));
    EXPECT_EQ(user.keysWithoutSymbol(), spare - 1);
}

// A program may have several windows, and another one in front by the time that the text comes.
TEST_F(X11SessionWithWindow, TypesIntoTheWindowOfTheProcessThatIsAskedFor) {
    const xcb_window_t later = xcb_generate_id(other->get());
    xcb_create_window(other->get(), XCB_COPY_FROM_PARENT, later, other->root(), 0, 0, 100, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(other->get(), later);
    for (const xcb_window_t each : {window, later}) {
        other->selectEvents(each, XCB_EVENT_MASK_KEY_PRESS);
    }
    focus(later);
    EXPECT_EQ(windowTypedInto(window), window);
    EXPECT_EQ(focused()->focus, later);
    EXPECT_EQ(windowTypedInto(later), later);
    xcb_destroy_window(other->get(), window);
    other->synchronise();
    EXPECT_EQ(windowTypedInto(window), later);
}

// Each window that anybody opens or moves would wake the application for ever.
TEST_F(X11SessionWithWindow, StopsListeningForAnAnswerThatDoesNotCome) {
    using namespace std::chrono_literals;
    focus(window);
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    hear();
    user.press(X11User::altKey);
    user.press(X11User::spaceKey);
    EXPECT_FALSE(user.isDown(X11User::spaceKey));
    hear();
    EXPECT_EQ(events, "P");
    EXPECT_TRUE(hearsOfOtherWindows());
    linuxdesktop::Deadline end(loop);
    end.set(5s, [this] { loop.quit(); });
    loop.run([this] {
        session.drain();
        if (!hearsOfOtherWindows()) {
            loop.quit();
        }
    });
    EXPECT_FALSE(hearsOfOtherWindows());
}

// A server gives the numbers of a client that has ended to the next client.
class X11SessionWithReusedNumber : public X11SessionWithWindow {
  protected:
    /// Has this process's window in front, ends its client, and has another process's window take
    /// the number.
    void SetUp() override {
        focus(window);
        session.refreshFront();
        ASSERT_EQ(front.load().process, getpid());
        other.reset();
        ASSERT_TRUE(mainQueue.runUntil([this] { return !connection->processOfClient(window); }));
        program.emplace();
        ASSERT_EQ(program->window(), window);
        other = linuxdesktop::XcbConnection::open().value();
        other->selectEvents(window, XCB_EVENT_MASK_KEY_PRESS);
        other->synchronise();
    }

    std::optional<ForkedWindow> program;
};

TEST_F(X11SessionWithReusedNumber, TypesNothingIntoAnotherProgram) {
    EXPECT_EQ(windowTypedInto(XCB_NONE), XCB_NONE);
    EXPECT_EQ(windowTypedInto(window), XCB_NONE);
    EXPECT_EQ(log.linesWith("has no window (1 characters)").size(), 2U);
}

// The number may change hands after the window was chosen.
TEST_F(X11SessionWithReusedNumber, BeginsNoBurstInAnotherProgram) {
    using linuxdesktop::KeyBurst;
    SingleBursts bursts(*connection);
    EXPECT_EQ(bursts.type(U"x", getpid(), window).outcome, KeyBurst::Outcome::notInFront);
    EXPECT_EQ(bursts.type(U"x", program->process(), window).outcome, KeyBurst::Outcome::done);
    EXPECT_EQ(keysThatArrived(), 1U);
    EXPECT_EQ(typedInto, window);
}

}  // namespace

}  // namespace tarvik::tests
