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
#include <thread>
#include <utility>
#include <vector>

#include "tests/linux/x11/ForkedWindow.h"
#include "tests/linux/x11/X11SessionTest.h"

namespace tarvik::tests {

namespace {

// Of this process, and announcing that it answers pings.
class X11SessionWithWindow : public X11SessionTest {
  protected:
    X11SessionWithWindow() {
        xcb_create_window(other->get(), XCB_COPY_FROM_PARENT, window, other->root(), 0, 0, 100, 100,
                          0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        const xcb_atom_t ping = other->atom("_NET_WM_PING");
        xcb_change_property(other->get(), XCB_PROP_MODE_REPLACE, window,
                            other->atom("WM_PROTOCOLS"), XCB_ATOM_ATOM, 32, 1, &ping);
        xcb_map_window(other->get(), window);
        other->synchronise();
    }

    // Answers pings as toolkits do: the message goes back to the root window. Notes where a key
    // arrives.
    void readEvents() {
        while (const linuxdesktop::XcbReply<xcb_generic_event_t> event{
            xcb_poll_for_event(other->get())}) {
            if ((event->response_type & 0x7F) == XCB_CLIENT_MESSAGE) {
                pings.push_back(reinterpret_cast<const xcb_client_message_event_t&>(*event));
            } else if (event->response_type == XCB_KEY_PRESS) {
                ++keysRead;
                typedInto = reinterpret_cast<const xcb_key_press_event_t&>(*event).event;
            }
        }
        for (auto& ping : answersPings ? std::exchange(pings, {}) : Pings()) {
            ping.window = other->root();
            xcb_send_event(other->get(), 0, other->root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                           reinterpret_cast<const char*>(&ping));
        }
        other->synchronise();
    }
    /// Runs the session and the program of the window until `condition` holds; false when it does
    /// not in time.
    bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        while (!condition() && std::chrono::steady_clock::now() < deadline) {
            linuxdesktop::Deadline turn(loop);
            turn.set(std::chrono::milliseconds(20), [this] { loop.quit(); });
            loop.run([this] {
                drain();
                readEvents();
            });
        }
        return condition();
    }
    virtual void drain() { session.drain(); }
    void focus(xcb_window_t target) {
        xcb_set_input_focus(other->get(), XCB_INPUT_FOCUS_NONE, target, XCB_CURRENT_TIME);
        other->synchronise();
    }
    linuxdesktop::XcbReply<xcb_get_input_focus_reply_t> focused() {
        return linuxdesktop::XcbReply<xcb_get_input_focus_reply_t>(
            xcb_get_input_focus_reply(other->get(), xcb_get_input_focus(other->get()), nullptr));
    }
    void type(xcb_window_t wanted) {
        bool isTyped = false;
        session.typist().type({getpid(), U"x"}, wanted, [&] { isTyped = true; });
        EXPECT_TRUE(runUntil([&] { return isTyped; }, std::chrono::seconds(15)));
    }
    // Where a key arrives that is typed for `wanted`.
    xcb_window_t windowTypedInto(xcb_window_t wanted) {
        typedInto = XCB_NONE;
        type(wanted);
        other->synchronise();
        readEvents();
        return typedInto;
    }
    bool hearsOfOtherWindows() {
        const linuxdesktop::XcbReply<xcb_get_window_attributes_reply_t> root(
            xcb_get_window_attributes_reply(
                connection->get(), xcb_get_window_attributes(connection->get(), connection->root()),
                nullptr));
        return (root->your_event_mask & XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY) != 0;
    }

    std::unique_ptr<linuxdesktop::XcbConnection> other =
        linuxdesktop::XcbConnection::open().value();
    const xcb_window_t window = xcb_generate_id(other->get());
    xcb_window_t typedInto = XCB_NONE;
    std::size_t keysRead = 0;
    using Pings = std::vector<xcb_client_message_event_t>;

    bool answersPings = true;
    // Those that are not answered.
    Pings pings;
};

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
    EXPECT_FALSE(log.hasLineWith("not delivered"));
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

/// Takes the focus away from a window, as a window manager that decides alone. The server's grab
/// does not stop that.
class FocusTaker {
  public:
    explicit FocusTaker(xcb_window_t window) {
        xcb_test_grab_control(connection_->get(), 1);
        connection_->selectEvents(window, XCB_EVENT_MASK_FOCUS_CHANGE);
        connection_->synchronise();
        thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
    }
    std::size_t count() const { return count_; }
    void rest() { isResting_ = true; }

  private:
    void run(const std::stop_token& stop) {
        pollfd descriptor{connection_->descriptor(), POLLIN, 0};
        while (!stop.stop_requested()) {
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
    std::jthread thread_;
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
    using namespace std::chrono_literals;
    constexpr std::size_t count = 100;
    bool isTyped = false;
    session.typist().type({getpid(), std::u32string(count, U'x')}, XCB_NONE,
                          [&] { isTyped = true; });
    // A busy machine lets some bursts through.
    EXPECT_TRUE(runUntil([&] { return isTyped || taker.count() > 3; }, 15s));
    taker.rest();
    EXPECT_TRUE(runUntil([&] { return isTyped; }, 15s));
    other->synchronise();
    readEvents();
    EXPECT_EQ(keysRead, count);
    EXPECT_FALSE(log.hasLineWith("not delivered"));
    EXPECT_EQ(focused()->focus, xcb_window_t{XCB_INPUT_FOCUS_NONE});
}

TEST_F(X11SessionWithTakenFocus, SaysHowMuchOfABurstIsTyped) {
    using linuxdesktop::KeyBurst;
    linuxdesktop::Keyboard keyboard(*connection);
    std::atomic<linuxdesktop::FrontWindow::Known> known = linuxdesktop::FrontWindow::Known();
    linuxdesktop::FrontWindow frontWindow(*connection, known);
    linuxdesktop::HotKeys hotKeys(*connection, keyboard, {});
    KeyBurst burst(*connection, keyboard, frontWindow, hotKeys, {});
    const std::u32string characters(40, U'x');
    std::size_t typed = 0;
    for (int tries = 0; tries < 100; ++tries) {
        const auto result = burst.type(characters, getpid(), XCB_NONE, window);
        typed += result.typed;
        EXPECT_EQ(result.outcome == KeyBurst::Outcome::done, result.typed == characters.size());
    }
    other->synchronise();
    readEvents();
    EXPECT_EQ(keysRead, typed);
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
                       linuxdesktop::OnLift{}, front, linuxdesktop::Typist::keyboardTimeout, &host);
    }
    void drain() override {
        session.drain();
        if (hosted) {
            hosted->drain();
        }
    }

    std::unique_ptr<linuxdesktop::XcbConnection> ownConnection =
        linuxdesktop::XcbConnection::open().value();
    ScriptedHost host{*other};
    std::optional<linuxdesktop::X11Session> hosted;
};

TEST_F(X11SessionWithHost, BorrowsTheKeyboardFromTheHostForAText) {
    using namespace std::chrono_literals;
    bool isTyped = false;
    hosted->typist().type({getpid(), U"abc"}, XCB_NONE, [&] { isTyped = true; });
    EXPECT_TRUE(runUntil([&] { return isTyped; }, 15s));
    other->synchronise();
    readEvents();
    EXPECT_EQ(keysRead, 3U);
    EXPECT_EQ(host.events, "lent back ");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(X11SessionWithHost, BorrowsNoKeyboardForTheWindowThatHasIt) {
    using namespace std::chrono_literals;
    focus(window);
    bool isTyped = false;
    hosted->typist().type({getpid(), U"abc"}, XCB_NONE, [&] { isTyped = true; });
    EXPECT_TRUE(runUntil([&] { return isTyped; }, 15s));
    other->synchronise();
    readEvents();
    EXPECT_EQ(keysRead, 3U);
    EXPECT_EQ(host.events, "");
}

// The host has lent the keyboard to another text for longer than a window is waited for otherwise.
TEST_F(X11SessionWithHost, WaitsForABusyHost) {
    using namespace std::chrono_literals;
    host.isBusy = true;
    bool isTyped = false;
    hosted->typist().type({getpid(), U"abc"}, XCB_NONE, [&] { isTyped = true; });
    EXPECT_FALSE(runUntil([&] { return isTyped; }, 4s));
    focus(window);
    EXPECT_TRUE(runUntil([&] { return isTyped; }, 15s));
    other->synchronise();
    readEvents();
    EXPECT_EQ(keysRead, 3U);
    EXPECT_EQ(host.events, "lent back ");
}

TEST_F(X11SessionWithHost, GivesTheKeyboardBackAtTheEnd) {
    using namespace std::chrono_literals;
    host.isBusy = true;
    hosted->typist().type({getpid(), U"abc"}, XCB_NONE, [] {});
    EXPECT_TRUE(runUntil([this] { return !host.events.empty(); }, 15s));
    hosted.reset();
    EXPECT_EQ(host.events, "lent back ");
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
    linuxdesktop::Keyboard keyboard(*connection);
    std::atomic<linuxdesktop::FrontWindow::Known> known = linuxdesktop::FrontWindow::Known();
    linuxdesktop::FrontWindow frontWindow(*connection, known);
    linuxdesktop::HotKeys hotKeys(*connection, keyboard, {});
    KeyBurst burst(*connection, keyboard, frontWindow, hotKeys, {});
    EXPECT_EQ(burst.type(U"x", getpid(), XCB_NONE, window).outcome, KeyBurst::Outcome::notInFront);
    EXPECT_EQ(burst.type(U"x", program->process(), XCB_NONE, window).outcome,
              KeyBurst::Outcome::done);
    other->synchronise();
    readEvents();
    EXPECT_EQ(typedInto, window);
}

}  // namespace

}  // namespace tarvik::tests
