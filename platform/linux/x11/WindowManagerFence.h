// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Tells when the window manager has handled every event before a request. The request asks for the
/// width of a window's frame, which window managers answer in turn. A window manager that does not
/// know the request, or none at all, never answers. Input thread only.
class WindowManagerFence {
  public:
    explicit WindowManagerFence(XcbConnection& connection);

    void request();
    /// Whether a changed property is the answer.
    bool isAnswer(const xcb_property_notify_event_t& event) const;

  private:
    XcbConnection& connection_;
    xcb_atom_t frameExtentsRequest_;
    xcb_atom_t frameExtents_;
    xcb_window_t window_;
};

}  // namespace tarvik::linuxdesktop
