// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/x11/X11Session.h"
#include "tests/linux/x11/X11Server.h"
#include "tests/linux/x11/X11User.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

/// The session without its thread, so that a test says when it hears of what has happened.
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
        {[this](linuxdesktop::HotKeyNumber) { note("P"); },
         [this](linuxdesktop::HotKeyNumber) { note("R"); },
         [this](linuxdesktop::HotKeyNumber, const std::string&) { note("L"); }},
        [this](std::uint32_t modifiers) { lifted = modifiers; },
        front};

    void note(const char* event) {
        events += event;
        if (const auto action = std::exchange(onEvent, nullptr)) {
            action();
        }
    }

    bool hearsOfEveryKey() const { return hearsOfEveryKey(*connection); }
    static bool hearsOfEveryKey(linuxdesktop::XcbConnection& client) {
        const linuxdesktop::XcbReply<xcb_input_xi_get_selected_events_reply_t> reply(
            xcb_input_xi_get_selected_events_reply(
                client.get(), xcb_input_xi_get_selected_events(client.get(), client.root()),
                nullptr));
        auto masks = xcb_input_xi_get_selected_events_masks_iterator(reply.get());
        std::uint32_t selected = 0;
        for (; masks.rem > 0; xcb_input_event_mask_next(&masks)) {
            selected |= *xcb_input_event_mask_mask(masks.data);
        }
        constexpr std::uint32_t raw =
            XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
        return (selected & raw) != 0;
    }

    // Everything that the server has sent by now has arrived after the first answer. The server has
    // done what the session has asked for before the second one.
    void hear() {
        connection->synchronise();
        session.drain();
        connection->synchronise();
    }
};

}  // namespace tarvik::tests
