// SPDX-License-Identifier: MIT

#include "tests/linux/x11/WindowManager.h"

#include <chrono>

#include "platform/linux/x11/WindowManagerFence.h"

namespace tarvik::tests {

using linuxdesktop::XcbReply;

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
    for (int question = 0; question < 20; ++question) {
        fence.request();
        xcb_flush(connection->get());
        if (mainQueue.runUntil(isAnswered, std::chrono::milliseconds(500))) {
            return true;
        }
    }
    return false;
}

}  // namespace tarvik::tests
