#pragma once

#include <xcb/xcb.h>

#include <cstdint>
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

/// The server's number for a name.
inline xcb_atom_t x11Atom(xcb_connection_t* connection, std::string_view name) {
    const X11Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection,
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

}  // namespace tarvik::linuxdesktop
