// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <map>
#include <optional>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The ping of window managers (_NET_WM_PING), whose answer shows that a window's program has read
/// every event before the ping. Input thread only.
class WindowPing {
  public:
    struct Answer {
        xcb_window_t window = XCB_NONE;
        std::uint32_t serial = 0;
    };

    explicit WindowPing(XcbConnection& connection);

    /// Whether a window's program says that it answers pings. Asks the server.
    bool isAnnounced(xcb_window_t window) const;
    /// Pings a window. Answers the ping's serial, which grows; empty when the window's program
    /// answers no pings.
    std::optional<std::uint32_t> send(xcb_window_t window);
    /// What a message on the root window answers; empty when the message is no answer to a ping.
    std::optional<Answer> answerIn(const xcb_client_message_event_t& message);
    /// Whether a window has ever answered. Some programs say that they answer pings and do not.
    /// A later program may get the number of a window that is gone.
    bool hasAnswered(xcb_window_t window) const;

  private:
    XcbConnection& connection_;
    xcb_atom_t protocols_;
    xcb_atom_t ping_;
    std::uint32_t serial_ = 0;
    // With the process of each.
    std::map<xcb_window_t, std::optional<std::int32_t>> answering_;
};

}  // namespace tarvik::linuxdesktop
