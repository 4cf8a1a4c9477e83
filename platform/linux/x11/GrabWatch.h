// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Tells when a client, this one included, grabs the keyboard and when it lets go. The server sends
/// the window with the focus, and the windows around it, focus events then. Input thread only.
class GrabWatch {
  public:
    enum class Change { none, begun, ended };

    /// Grabs are heard of while the focus is nowhere.
    explicit GrabWatch(XcbConnection& connection);

    /// Grabs are heard of while the focus is inside `front`, which may be XCB_NONE. Those that were
    /// heard of in another window before are not any more.
    void follow(xcb_window_t front);
    /// What a focus event tells.
    static Change changeIn(const xcb_input_focus_in_event_t& event);

    /// Asks the server whether another client has grabbed the keyboard. Where none has, programs
    /// see a grab that begins and ends at once.
    bool isTakenByOther();

  private:
    void select(xcb_window_t window, bool isWanted);

    XcbConnection& connection_;
    xcb_window_t front_ = XCB_NONE;
};

}  // namespace tarvik::linuxdesktop
