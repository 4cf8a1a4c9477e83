#pragma once

#include <xcb/xcb.h>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Tells when the window manager has followed everything that happened before a question. It asks
/// how wide a frame would be, which managers answer in turn; without one that does, no answer
/// comes. Input thread only.
class ManagerEcho {
  public:
    explicit ManagerEcho(XcbConnection& connection);

    void ask();
    /// Whether a changed property is the answer.
    bool isAnswer(const xcb_property_notify_event_t& event) const;

  private:
    XcbConnection& connection_;
    xcb_atom_t question_;
    xcb_atom_t answer_;
    xcb_window_t window_;
};

}  // namespace tarvik::linuxdesktop
