#pragma once

#include <xcb/xcb.h>

#include <cstdint>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Asks a window to say that it has read everything that was sent to it before. Input thread only.
class WindowPing {
  public:
    explicit WindowPing(XcbConnection& connection);

    /// Asks; false when the window's program does not answer such questions. An earlier question
    /// is forgotten.
    bool ask(xcb_window_t window);
    /// True from the answer to the next question.
    bool isAnswered() const { return isAnswered_; }

    /// Hears a message on the root window; true when it is the answer.
    bool noticeMessage(const xcb_client_message_event_t& message);

  private:
    XcbConnection& connection_;
    xcb_atom_t protocols_;
    xcb_atom_t ping_;
    std::uint32_t question_ = 0;
    bool isAnswered_ = false;
};

}  // namespace tarvik::linuxdesktop
