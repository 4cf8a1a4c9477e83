// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// As long as it lives the server listens to this client alone. Not to be nested.
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
