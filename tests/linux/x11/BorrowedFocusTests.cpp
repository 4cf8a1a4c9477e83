// SPDX-License-Identifier: MIT

#include <poll.h>
#include <unistd.h>
#include <xcb/xtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/input/XProgramHost.h"
#include "tests/linux/x11/X11SessionWindowTest.h"
#include "tests/support/JoiningThread.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

/// Takes the focus away from a window, as a window manager that decides alone. The server's grab
/// does not stop that.
class FocusTaker {
  public:
    explicit FocusTaker(xcb_window_t window) {
        xcb_test_grab_control(connection_->get(), 1);
        connection_->selectEvents(window, XCB_EVENT_MASK_FOCUS_CHANGE);
        connection_->synchronise();
        thread_.emplace([this] { run(); });
    }
    ~FocusTaker() { isEnding_ = true; }
    FocusTaker(const FocusTaker&) = delete;
    FocusTaker& operator=(const FocusTaker&) = delete;

    std::size_t count() const { return count_; }
    void rest() { isResting_ = true; }

  private:
    void run() {
        pollfd descriptor{connection_->descriptor(), POLLIN, 0};
        while (!isEnding_) {
            poll(&descriptor, 1, 20);
            while (const linuxdesktop::XcbReply<xcb_generic_event_t> event{
                xcb_poll_for_event(connection_->get())}) {
                if (event->response_type == XCB_FOCUS_IN && !isResting_) {
                    ++count_;
                    xcb_set_input_focus(connection_->get(), XCB_INPUT_FOCUS_NONE,
                                        XCB_INPUT_FOCUS_NONE, XCB_CURRENT_TIME);
                    connection_->synchronise();
                }
            }
        }
    }

    std::unique_ptr<linuxdesktop::XcbConnection> connection_ =
        linuxdesktop::XcbConnection::open().value();
    std::atomic<std::size_t> count_ = 0;
    std::atomic<bool> isResting_ = false;
    std::atomic<bool> isEnding_ = false;
    std::optional<simulated::JoiningThread> thread_;
};

class X11SessionWithTakenFocus : public X11SessionWithWindow {
  protected:
    X11SessionWithTakenFocus() {
        other->selectEvents(window, XCB_EVENT_MASK_KEY_PRESS);
        focus(XCB_INPUT_FOCUS_NONE);
    }

    FocusTaker taker{window};
};

// More keys than one burst has, so that the focus may go in the middle.
TEST_F(X11SessionWithTakenFocus, TypesEveryCharacterOnceTheFocusStays) {
    constexpr std::size_t count = 100;
    bool isTyped = false;
    session.typist().type({getpid(), std::u32string(count, U'x')}, XCB_NONE,
                          [&] { isTyped = true; });
    // A busy machine lets some bursts through.
    EXPECT_TRUE(runUntil([&] { return isTyped || taker.count() > 3; }, 15s));
    taker.rest();
    EXPECT_TRUE(runUntil([&] { return isTyped; }, 15s));
    EXPECT_EQ(keysThatArrived(), count);
    EXPECT_FALSE(log.hasLineWith("not delivered"));
    EXPECT_EQ(focused()->focus, xcb_window_t{XCB_INPUT_FOCUS_NONE});
}

TEST_F(X11SessionWithTakenFocus, SaysHowMuchOfABurstIsTyped) {
    using linuxdesktop::KeyBurst;
    SingleBursts bursts(*connection);
    const std::u32string characters(40, U'x');
    std::size_t typed = 0;
    // On a busy machine the focus is seldom taken in time.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    for (int tries = 0;
         tries < 100 || (taker.count() <= 10 && std::chrono::steady_clock::now() < end); ++tries) {
        const auto result = bursts.type(characters, getpid(), window);
        typed += result.typed;
        EXPECT_EQ(result.outcome == KeyBurst::Outcome::done, result.typed == characters.size());
    }
    EXPECT_EQ(keysThatArrived(), typed);
    EXPECT_GT(taker.count(), 10U);
}

/// A compositor that alone gives the keyboard to windows.
class ScriptedHost final : public linuxdesktop::XProgramHost {
  public:
    explicit ScriptedHost(linuxdesktop::XcbConnection& connection) : connection_(connection) {}

    void setAccompaniment(std::function<void()>) override {}
    void setXProgramObserver(std::function<void()>) override {}
    void lendKeyboard(std::uint32_t window) override {
        events += "lent ";
        if (!isBusy) {
            xcb_set_input_focus(connection_.get(), XCB_INPUT_FOCUS_NONE, window, XCB_CURRENT_TIME);
            connection_.synchronise();
        }
    }
    void giveKeyboardBack(std::uint32_t) override { events += "back "; }

    std::string events;
    bool isBusy = false;

  private:
    linuxdesktop::XcbConnection& connection_;
};

class X11SessionWithHost : public X11SessionWithWindow {
  protected:
    X11SessionWithHost() {
        other->selectEvents(window, XCB_EVENT_MASK_KEY_PRESS);
        focus(XCB_INPUT_FOCUS_NONE);
        hosted.emplace(*ownConnection, loop, log, linuxdesktop::HotKeys::Events{},
                       linuxdesktop::OnLift{}, front, linuxdesktop::Typist::keyboardTimeout,
                       linuxdesktop::Compositor{&host});
    }
    void drain() override {
        session.drain();
        if (hosted) {
            hosted->drain();
        }
    }
    void type() {
        hosted->typist().type({getpid(), U"abc"}, XCB_NONE, [this] { isTyped = true; });
    }
    bool isTypedWithin(std::chrono::seconds timeout) {
        return runUntil([this] { return isTyped; }, timeout);
    }

    bool isTyped = false;
    std::unique_ptr<linuxdesktop::XcbConnection> ownConnection =
        linuxdesktop::XcbConnection::open().value();
    ScriptedHost host{*other};
    std::optional<linuxdesktop::X11Session> hosted;
};

TEST_F(X11SessionWithHost, BorrowsTheKeyboardFromTheHostForAText) {
    type();
    EXPECT_TRUE(isTypedWithin(15s));
    EXPECT_EQ(keysThatArrived(), 3U);
    EXPECT_EQ(host.events, "lent back ");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(X11SessionWithHost, BorrowsNoKeyboardForTheWindowThatHasIt) {
    focus(window);
    type();
    EXPECT_TRUE(isTypedWithin(15s));
    EXPECT_EQ(keysThatArrived(), 3U);
    EXPECT_EQ(host.events, "");
}

// The host has lent the keyboard to another text for longer than a window is waited for otherwise.
TEST_F(X11SessionWithHost, WaitsForABusyHost) {
    host.isBusy = true;
    type();
    EXPECT_FALSE(isTypedWithin(4s));
    focus(window);
    EXPECT_TRUE(isTypedWithin(15s));
    EXPECT_EQ(keysThatArrived(), 3U);
    EXPECT_EQ(host.events, "lent back ");
}

TEST_F(X11SessionWithHost, GivesTheKeyboardBackAtTheEnd) {
    host.isBusy = true;
    type();
    EXPECT_TRUE(runUntil([this] { return !host.events.empty(); }, 15s));
    hosted.reset();
    EXPECT_EQ(host.events, "lent back ");
}

}  // namespace

}  // namespace tarvik::tests
