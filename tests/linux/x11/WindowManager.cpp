// SPDX-License-Identifier: MIT

#include "tests/linux/x11/WindowManager.h"

#include <signal.h>

#include <chrono>
#include <stdexcept>

#include "platform/linux/x11/WindowManagerFence.h"

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

}  // namespace

bool waitForWindowManager(RealTimeQueue& mainQueue) {
    const auto connection = linuxdesktop::XcbConnection::open().value();
    linuxdesktop::WindowManagerFence fence(*connection);
    const auto isAnswered = [&] {
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection->get())}) {
            if (event->response_type == XCB_PROPERTY_NOTIFY &&
                fence.isAnswer(reinterpret_cast<const xcb_property_notify_event_t&>(*event))) {
                return true;
            }
        }
        return false;
    };
    // One that has only just started may miss a question.
    for (int question = 0; question < 60; ++question) {
        fence.request();
        xcb_flush(connection->get());
        if (mainQueue.runUntil(isAnswered, std::chrono::milliseconds(500))) {
            return true;
        }
    }
    return false;
}

void moveFrontWindowAway() {
    const auto connection = XcbConnection::open().value();
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = windowInProperty(*connection, "_NET_ACTIVE_WINDOW");
    message.type = connection->atom("_NET_WM_DESKTOP");
    message.data.data32[0] = 1;
    message.data.data32[1] = 2;
    xcb_send_event(connection->get(), 0, connection->root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
    connection->synchronise();
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
