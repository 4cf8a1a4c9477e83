// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <chrono>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Tells that a program which is never idle, such as a terminal full of output, has got through the
/// events before now. A marker is a message that every program ignores. Input thread only.
class ReadMarkers {
  public:
    /// The markers for one window since its last key.
    struct Count {
        bool isSent = false;
        int read = 0;
    };

    /// `connection` outlives the object.
    explicit ReadMarkers(XcbConnection& connection);

    /// To be called when no event of the server waits for the window's program, `interval` after
    /// the last call. Whether a program of so many `threads` has read enough markers; sends the
    /// next one otherwise. Never waits.
    bool prove(xcb_window_t window, Count& count, std::chrono::milliseconds interval, int threads);

  private:
    XcbConnection& connection_;
    xcb_atom_t marker_;
};

}  // namespace tarvik::linuxdesktop
