#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace tarvik::linuxdesktop {

struct X11ReplyDeleter {
    void operator()(void* reply) const { std::free(reply); }
};

/// The server's answer to a request; empty when it refused.
template <typename Reply>
using X11Reply = std::unique_ptr<Reply, X11ReplyDeleter>;

/// Qt's connection to the X server; null on every other kind of desktop. Main thread only.
xcb_connection_t* x11Connection();

/// The server's number for a name.
xcb_atom_t x11Atom(xcb_connection_t* connection, std::string_view name);

}  // namespace tarvik::linuxdesktop
