// SPDX-License-Identifier: MIT

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/x11/X11Session.h"
#include "tests/linux/x11/X11Server.h"
#include "tests/linux/x11/X11User.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::HotKeyNumber;

// What happens right before the library sends what is ready.
std::function<void()> beforeFlush;

// The session without its thread, so that a test says when it hears of what has happened.
class X11SessionTest : public testing::Test {
  protected:
    RealTimeQueue mainQueue;
    X11Server server{mainQueue};
    RecordingLog log;
    X11User user;
    std::unique_ptr<linuxdesktop::XcbConnection> connection =
        linuxdesktop::XcbConnection::open().value();
    linuxdesktop::PollLoop loop;
    std::atomic<linuxdesktop::FrontWindow::Known> front = linuxdesktop::FrontWindow::Known();
    std::string events;
    std::uint32_t lifted = 0;
    // Called at the next event.
    std::function<void()> onEvent;
    linuxdesktop::X11Session session{
        *connection,
        loop,
        log,
        {[this](HotKeyNumber) { note("P"); }, [this](HotKeyNumber) { note("R"); },
         [this](HotKeyNumber, const std::string&) { note("L"); }},
        [this](std::uint32_t modifiers) { lifted = modifiers; },
        front};

    void note(const char* event) {
        events += event;
        if (const auto action = std::exchange(onEvent, nullptr)) {
            action();
        }
    }

    bool hearsOfEveryKey() const {
        const linuxdesktop::XcbReply<xcb_input_xi_get_selected_events_reply_t> reply(
            xcb_input_xi_get_selected_events_reply(
                connection->get(),
                xcb_input_xi_get_selected_events(connection->get(), connection->root()), nullptr));
        auto masks = xcb_input_xi_get_selected_events_masks_iterator(reply.get());
        std::uint32_t selected = 0;
        for (; masks.rem > 0; xcb_input_event_mask_next(&masks)) {
            selected |= *xcb_input_event_mask_mask(masks.data);
        }
        constexpr std::uint32_t raw =
            XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
        return (selected & raw) != 0;
    }

    // Everything that the server has sent by now has arrived after the answer.
    void hear() {
        connection->synchronise();
        session.drain();
    }
};

TEST_F(X11SessionTest, EndsAHoldWhosePressWasUnheardWhenTypingTookTheKeyboard) {
    for (const auto first : {X11User::spaceKey, X11User::altKey}) {
        events.clear();
        lifted = 0;
        ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
                  platform::noErr);
        hear();
        user.press(X11User::altKey);
        user.press(X11User::spaceKey);
        EXPECT_FALSE(user.isDown(X11User::spaceKey));
        session.typist().type({std::nullopt, U"x"}, XCB_NONE, [] {});
        EXPECT_EQ(lifted, platform::optionKeyMask);
        EXPECT_FALSE(user.isDown(X11User::altKey));
        hear();
        EXPECT_EQ(events, "P");
        user.release(first);
        user.isDown(first);
        hear();
        EXPECT_EQ(events, "PR");
        user.release(X11User::spaceKey);
        user.release(X11User::altKey);
        user.isDown(first);
        hear();
        EXPECT_EQ(events, "PR");
        session.hotKeys().remove(1);
    }
}

// While the library sends, it also takes in what has come, and the descriptor tells nothing of it.
TEST_F(X11SessionTest, HandlesWhatComesWhileItSends) {
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    hear();
    onEvent = [this] {
        beforeFlush = [this] {
            user.release(X11User::spaceKey);
            EXPECT_FALSE(user.isDown(X11User::spaceKey));
        };
    };
    user.press(X11User::altKey);
    user.press(X11User::spaceKey);
    EXPECT_FALSE(user.isDown(X11User::spaceKey));
    hear();
    pollfd socket{connection->descriptor(), POLLIN, 0};
    while (poll(&socket, 1, 0) > 0) {
        session.drain();
    }
    EXPECT_EQ(events, "PR");
}

TEST_F(X11SessionTest, TellsHowMuchIsLostWhereAnotherProgramKeepsTheKeyboard) {
    const auto other = linuxdesktop::XcbConnection::open().value();
    linuxdesktop::X11Session refused(*other, loop, log,
                                     {[](HotKeyNumber) {}, [](HotKeyNumber) {}, {}}, {}, front,
                                     std::chrono::milliseconds(200));
    X11User locker;
    locker.grabWholeKeyboard();
    refused.typist().type({std::nullopt, U"lost"}, XCB_NONE, [this] { loop.quit(); });
    loop.run([&] { refused.drain(); });
    EXPECT_TRUE(
        log.hasLineWith("TarvikDictate: typed text not delivered: another program has "
                        "taken the keyboard (4 characters)"));
    EXPECT_EQ(locker.grabbedPresses(), 0);
}

// Nothing is left to wait for after it.
// No window reads the keys, so that nothing but time tells when they can be used again.
TEST_F(X11SessionTest, TypesMoreThanThereAreSpareKeysWhereNoWindowIsInFront) {
    std::u32string text;
    for (char32_t character = U'\u4E00'; character < U'\u4F00'; ++character) {
        text += character;
    }
    session.typist().type({std::nullopt, text}, XCB_NONE, [] {});
    session.typist().whenIdle([this] { loop.quit(); });
    loop.run([this] { session.drain(); });
    EXPECT_EQ(log.lines(), std::vector<std::string>());
}

TEST_F(X11SessionTest, TellsAtItsEndThatTypingIsOver) {
    bool isOver = false;
    bool isTyped = false;
    const auto other = linuxdesktop::XcbConnection::open().value();
    {
        linuxdesktop::X11Session ending(*other, loop, log,
                                        {[](HotKeyNumber) {}, [](HotKeyNumber) {}, {}}, {}, front);
        ending.typist().type({std::nullopt, U"ж"}, XCB_NONE, [&] { isTyped = true; });
        ending.typist().whenIdle([&] { isOver = true; });
        EXPECT_FALSE(isOver);
    }
    EXPECT_TRUE(isOver);
    EXPECT_TRUE(isTyped);
}

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
                hasPing = true;
                if (!answersPings) {
                    continue;
                }
                auto& message = reinterpret_cast<xcb_client_message_event_t&>(*event);
                message.window = other->root();
                xcb_send_event(other->get(), 0, other->root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                               reinterpret_cast<const char*>(&message));
            } else if (event->response_type == XCB_KEY_PRESS) {
                typedInto = reinterpret_cast<const xcb_key_press_event_t&>(*event).event;
            }
        }
        other->synchronise();
    }
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
        while (!isTyped) {
            linuxdesktop::Deadline turn(loop);
            turn.set(std::chrono::milliseconds(20), [this] { loop.quit(); });
            loop.run([this] {
                session.drain();
                readEvents();
            });
        }
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
    bool answersPings = true;
    bool hasPing = false;
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
    focus(window);
    type(XCB_NONE);
    answersPings = false;
    hasPing = false;
    bool isTyped = false;
    session.typist().type({getpid(), U"ж"}, XCB_NONE, [&] { isTyped = true; });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(15);
    while (!isTyped && std::chrono::steady_clock::now() < deadline) {
        linuxdesktop::Deadline turn(loop);
        turn.set(std::chrono::milliseconds(20), [this] { loop.quit(); });
        loop.run([this] {
            session.drain();
            readEvents();
            if (hasPing) {
                xcb_destroy_window(other->get(), window);
                other->synchronise();
            }
        });
    }
    EXPECT_TRUE(isTyped);
    EXPECT_FALSE(log.hasLineWith("not delivered"));
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

// Each key of the user would wake the application.
TEST_F(X11SessionTest, HearsOfOtherKeysOnlyDuringAHold) {
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    hear();
    EXPECT_FALSE(hearsOfEveryKey());
    user.press(X11User::altKey);
    user.press(X11User::spaceKey);
    user.isDown(X11User::spaceKey);
    hear();
    EXPECT_TRUE(hearsOfEveryKey());
    user.release(X11User::spaceKey);
    user.release(X11User::altKey);
    user.isDown(X11User::spaceKey);
    hear();
    EXPECT_EQ(events, "PR");
    EXPECT_FALSE(hearsOfEveryKey());
}

// What the server has done by the time that the press is handled.
TEST_F(X11SessionTest, LeavesNoKeyDownThatWentUpBeforeThePressWasHandled) {
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    hear();
    for (const bool isAltFirst : {false, true}) {
        events.clear();
        user.press(X11User::altKey);
        user.press(X11User::spaceKey);
        user.release(isAltFirst ? X11User::altKey : X11User::spaceKey);
        user.release(isAltFirst ? X11User::spaceKey : X11User::altKey);
        user.isDown(X11User::altKey);
        hear();
        EXPECT_EQ(events, "PR");
        EXPECT_FALSE(user.isDown(X11User::altKey));
        EXPECT_FALSE(user.isDown(X11User::spaceKey));
    }
}

// Keys that are pressed while the press of the hotkey waits to be handled.
TEST_F(X11SessionTest, PassesOnWhatOtherProgramsAreToGet) {
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    hear();
    user.press(X11User::altKey);
    user.press(X11User::spaceKey);
    user.press(X11User::qKey);
    user.release(X11User::altKey);
    EXPECT_FALSE(user.isDown(X11User::qKey));
    hear();
    EXPECT_TRUE(user.isDown(X11User::qKey));
    EXPECT_FALSE(user.isDown(X11User::altKey));
    user.release(X11User::qKey);
    user.release(X11User::spaceKey);
    EXPECT_FALSE(user.isDown(X11User::qKey));
    hear();
    EXPECT_EQ(events, "PR");
}

TEST_F(X11SessionTest, DoesNotBlameAnotherProgramForTheEndOfTheServer) {
    using namespace std::chrono_literals;
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    connection->shutDown();
    linuxdesktop::Deadline end(loop);
    end.set(100ms, [this] { loop.quit(); });
    loop.run();
    EXPECT_EQ(events, "");
}

}  // namespace

}  // namespace tarvik::tests

// In the place of the library's own, which it calls.
int xcb_flush(xcb_connection_t* connection) {
    if (auto& action = tarvik::tests::beforeFlush) {
        std::exchange(action, nullptr)();
    }
    static const auto original =
        reinterpret_cast<decltype(&xcb_flush)>(dlsym(RTLD_NEXT, "xcb_flush"));
    return original(connection);
}
