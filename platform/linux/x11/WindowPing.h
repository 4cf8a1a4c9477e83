// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The ping of window managers (_NET_WM_PING), whose answer shows that a window's program has read
/// every event before the ping. Input thread only.
class WindowPing {
  public:
    explicit WindowPing(XcbConnection& connection);

    /// Pings a window, and forgets an earlier ping. False when the window's program answers no
    /// pings.
    bool send(xcb_window_t window);
    /// True from the answer to the next ping.
    bool isAnswered() const { return isAnswered_; }

    /// A message has come on the root window. True when the message is the answer.
    bool handleMessage(const xcb_client_message_event_t& message);

  private:
    XcbConnection& connection_;
    xcb_atom_t protocols_;
    xcb_atom_t ping_;
    std::uint32_t serial_ = 0;
    bool isAnswered_ = false;
};

}  // namespace tarvik::linuxdesktop
