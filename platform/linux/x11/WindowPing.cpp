#include "platform/linux/x11/WindowPing.h"

#include <algorithm>

namespace tarvik::linuxdesktop {

WindowPing::WindowPing(XcbConnection& connection)
    : connection_(connection),
      protocols_(connection.atom("WM_PROTOCOLS")),
      ping_(connection.atom("_NET_WM_PING")) {}

bool WindowPing::ask(xcb_window_t window) {
    isAnswered_ = false;
    ++question_;
    const auto spoken = connection_.property(window, protocols_, XCB_ATOM_ATOM);
    if (std::ranges::find(spoken, ping_) == spoken.end()) {
        return false;
    }
    // The question's number stands where a window manager puts the time, which only the asker
    // reads.
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = protocols_;
    message.data.data32[0] = ping_;
    message.data.data32[1] = question_;
    message.data.data32[2] = window;
    xcb_send_event(connection_.get(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&message));
    return true;
}

bool WindowPing::noticeMessage(const xcb_client_message_event_t& message) {
    const bool isAnswer = message.window == connection_.root() && message.type == protocols_ &&
                          message.data.data32[0] == ping_ && message.data.data32[1] == question_;
    isAnswered_ = isAnswered_ || isAnswer;
    return isAnswer;
}

}  // namespace tarvik::linuxdesktop
