// SPDX-License-Identifier: MIT

#include "platform/linux/x11/WindowPing.h"

#include <algorithm>

namespace tarvik::linuxdesktop {

WindowPing::WindowPing(XcbConnection& connection)
    : connection_(connection),
      protocols_(connection.atom("WM_PROTOCOLS")),
      ping_(connection.atom("_NET_WM_PING")) {}

bool WindowPing::send(xcb_window_t window) {
    isAnswered_ = false;
    ++serial_;
    const auto spoken = connection_.property(window, protocols_, XCB_ATOM_ATOM);
    if (std::ranges::find(spoken, ping_) == spoken.end()) {
        return false;
    }
    // The serial stands where a window manager puts the time, which only the sender reads.
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = protocols_;
    message.data.data32[0] = ping_;
    message.data.data32[1] = serial_;
    message.data.data32[2] = window;
    xcb_send_event(connection_.get(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&message));
    return true;
}

bool WindowPing::handleMessage(const xcb_client_message_event_t& message) {
    const bool isAnswer = message.window == connection_.root() && message.type == protocols_ &&
                          message.data.data32[0] == ping_ && message.data.data32[1] == serial_;
    isAnswered_ = isAnswered_ || isAnswer;
    return isAnswer;
}

}  // namespace tarvik::linuxdesktop
