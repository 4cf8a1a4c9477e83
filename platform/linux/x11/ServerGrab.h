// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The server listens to this client alone while the object lives. Not to be nested. Input thread
/// only.
class ServerGrab {
  public:
    explicit ServerGrab(XcbConnection& connection) : connection_(connection) {
        xcb_grab_server(connection_.get());
    }
    ~ServerGrab() {
        xcb_ungrab_server(connection_.get());
        xcb_flush(connection_.get());
    }
    ServerGrab(const ServerGrab&) = delete;
    ServerGrab& operator=(const ServerGrab&) = delete;

  private:
    XcbConnection& connection_;
};

}  // namespace tarvik::linuxdesktop
