// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The input methods of the session. An input method gets the keys of every program first, and
/// composes other characters from them. Input thread only.
class InputMethods {
  public:
    explicit InputMethods(XcbConnection& connection);

    /// Whether an input method runs, as far as the server is told of it. Asks the server.
    bool isRunning();

  private:
    XcbConnection& connection_;
    xcb_atom_t servers_;
};

}  // namespace tarvik::linuxdesktop
