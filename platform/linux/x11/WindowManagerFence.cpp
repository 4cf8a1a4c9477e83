// SPDX-License-Identifier: MIT

#include "platform/linux/x11/WindowManagerFence.h"

namespace tarvik::linuxdesktop {

WindowManagerFence::WindowManagerFence(XcbConnection& connection)
    : connection_(connection),
      frameExtentsRequest_(connection.atom("_NET_REQUEST_FRAME_EXTENTS")),
      frameExtents_(connection.atom("_NET_FRAME_EXTENTS")),
      window_(xcb_generate_id(connection.get())) {
    xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window_, connection_.root(), -1, -1,
                      1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    connection_.selectEvents(window_, XCB_EVENT_MASK_PROPERTY_CHANGE);
}

void WindowManagerFence::request() {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window_;
    message.type = frameExtentsRequest_;
    xcb_send_event(connection_.get(), 0, connection_.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
}

bool WindowManagerFence::isAnswer(const xcb_property_notify_event_t& event) const {
    return event.window == window_ && event.atom == frameExtents_;
}

}  // namespace tarvik::linuxdesktop
