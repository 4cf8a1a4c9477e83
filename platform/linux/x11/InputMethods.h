// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The input method that a program may ask about its keys.
struct InputMethod {
    enum class Kind {
        none,
        /// Nobody tells when it has answered.
        unobserved,
        /// IbusAnswers tells.
        ibus,
    };
    Kind kind = Kind::none;
    /// The process that answers X programs; 0 where it is unknown.
    std::int32_t process = 0;
};

/// The input methods of the session. An input method gets the keys of every program first, and
/// composes other characters from them. Input thread only.
class InputMethods {
  public:
    explicit InputMethods(XcbConnection& connection);

    struct Running {
        bool isAny = false;
        bool isIBus = false;
        /// The process of IBus where it runs, else of another one; empty where the server does not
        /// know.
        std::optional<std::int32_t> process;
    };
    /// Which input methods run, as far as the server is told of them. Asks the server.
    Running find();

  private:
    XcbConnection& connection_;
    xcb_atom_t servers_;
    xcb_atom_t ibus_;
};

}  // namespace tarvik::linuxdesktop
