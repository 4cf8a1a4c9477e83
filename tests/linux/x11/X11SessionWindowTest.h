// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/linux/x11/X11SessionTest.h"

namespace tarvik::tests {

/// Types single bursts of keys, without the further tries of a Typist.
class SingleBursts {
  public:
    explicit SingleBursts(linuxdesktop::XcbConnection& connection)
        : keyboard_(connection),
          frontWindow_(connection, front_),
          hotKeys_(connection, keyboard_, {}),
          burst_(connection, keyboard_, frontWindow_, hotKeys_, {}) {}

    linuxdesktop::KeyBurst::Result type(std::u32string_view characters, pid_t process,
                                        xcb_window_t behind) {
        return burst_.type(characters, process, XCB_NONE, behind);
    }

  private:
    linuxdesktop::Keyboard keyboard_;
    std::atomic<linuxdesktop::FrontWindow::Known> front_ = linuxdesktop::FrontWindow::Known();
    linuxdesktop::FrontWindow frontWindow_;
    linuxdesktop::HotKeys hotKeys_;
    linuxdesktop::KeyBurst burst_;
};

/// With a window of this process, which announces that it answers pings.
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
    /// How many keys have arrived by now.
    std::size_t keysThatArrived() {
        other->synchronise();
        readEvents();
        return keysRead;
    }
    // Where a key arrives that is typed for `wanted`.
    xcb_window_t windowTypedInto(xcb_window_t wanted) {
        typedInto = XCB_NONE;
        type(wanted);
        keysThatArrived();
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

}  // namespace tarvik::tests
