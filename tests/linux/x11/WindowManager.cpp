// SPDX-License-Identifier: MIT

#include "tests/linux/x11/WindowManager.h"

#include <signal.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <span>
#include <stdexcept>
#include <string_view>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::tests {

using linuxdesktop::XcbConnection;
using linuxdesktop::XcbReply;

namespace {

xcb_window_t windowInProperty(XcbConnection& connection, std::string_view name) {
    const auto window =
        connection.firstOfProperty(connection.root(), connection.atom(name), XCB_ATOM_WINDOW);
    if (!window) {
        throw std::runtime_error("no window manager runs");
    }
    return *window;
}

void sendToWindowManager(XcbConnection& connection, xcb_window_t window, std::string_view name,
                         std::array<std::uint32_t, 2> data) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = connection.atom(name);
    std::ranges::copy(data, std::begin(message.data.data32));
    xcb_send_event(connection.get(), 0, connection.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
    connection.synchronise();
}

}  // namespace

// Window managers answer in turn which frame a window would have.
bool waitForWindowManager(RealTimeQueue& mainQueue) {
    const auto connection = XcbConnection::open().value();
    const xcb_atom_t answer = connection->atom("_NET_FRAME_EXTENTS");
    const xcb_window_t window = xcb_generate_id(connection->get());
    xcb_create_window(connection->get(), XCB_COPY_FROM_PARENT, window, connection->root(), -1, -1,
                      1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    connection->selectEvents(window, XCB_EVENT_MASK_PROPERTY_CHANGE);
    xcb_client_message_event_t question{};
    question.response_type = XCB_CLIENT_MESSAGE;
    question.format = 32;
    question.window = window;
    question.type = connection->atom("_NET_REQUEST_FRAME_EXTENTS");
    const auto isAnswered = [&] {
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection->get())}) {
            const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
            if (event->response_type == XCB_PROPERTY_NOTIFY && change.atom == answer) {
                return true;
            }
        }
        return false;
    };
    // One that has only just started may miss a question.
    for (int tries = 0; tries < 60; ++tries) {
        xcb_send_event(connection->get(), 0, connection->root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&question));
        xcb_flush(connection->get());
        if (mainQueue.runUntil(isAnswered, std::chrono::milliseconds(500))) {
            return true;
        }
    }
    return false;
}

xcb_window_t frontWindow() {
    return windowInProperty(*XcbConnection::open().value(), "_NET_ACTIVE_WINDOW");
}

void setFocus(xcb_window_t window) {
    const auto connection = XcbConnection::open().value();
    xcb_set_input_focus(connection->get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    connection->synchronise();
}

void bringToFront(platform::ProcessIdentifier process) {
    const auto connection = XcbConnection::open().value();
    constexpr std::uint32_t maxWindows = 1000;
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection->get(),
        xcb_get_property(connection->get(), 0, connection->root(),
                         connection->atom("_NET_CLIENT_LIST"), XCB_ATOM_WINDOW, 0, maxWindows),
        nullptr));
    if (!reply) {
        throw std::runtime_error("no list of windows");
    }
    const std::span windows(static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get())),
                            reply->value_len);
    for (const xcb_window_t window : windows) {
        if (connection->processOfClient(window) == process) {
            // As a pager asks.
            sendToWindowManager(*connection, window, "_NET_ACTIVE_WINDOW", {2, XCB_CURRENT_TIME});
            return;
        }
    }
    throw std::runtime_error("no window of the process");
}

void moveFrontWindowAway() {
    const auto connection = XcbConnection::open().value();
    sendToWindowManager(*connection, windowInProperty(*connection, "_NET_ACTIVE_WINDOW"),
                        "_NET_WM_DESKTOP", {1, 2});
}

void minimiseFrontWindow() {
    constexpr std::uint32_t iconicState = 3;
    const auto connection = XcbConnection::open().value();
    sendToWindowManager(*connection, windowInProperty(*connection, "_NET_ACTIVE_WINDOW"),
                        "WM_CHANGE_STATE", {iconicState, 0});
}

StoppedWindowManager::StoppedWindowManager() {
    const auto connection = XcbConnection::open().value();
    process_ =
        connection->processOfClient(windowInProperty(*connection, "_NET_SUPPORTING_WM_CHECK"))
            .value();
    kill(process_, SIGSTOP);
}

StoppedWindowManager::~StoppedWindowManager() {
    kill(process_, SIGCONT);
}

}  // namespace tarvik::tests
