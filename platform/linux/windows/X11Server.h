// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace tarvik::linuxdesktop {

struct X11ReplyDeleter {
    void operator()(void* reply) const { std::free(reply); }
};

/// The server's reply to a request; null when the server refused the request.
template <typename Reply>
using X11Reply = std::unique_ptr<Reply, X11ReplyDeleter>;

/// Qt's connection to the X server; null without an X server. Main thread only.
xcb_connection_t* x11Connection();

/// The atom of `name`. Waits for the reply of the server.
xcb_atom_t x11Atom(xcb_connection_t* connection, std::string_view name);

}  // namespace tarvik::linuxdesktop
