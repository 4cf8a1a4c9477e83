// SPDX-License-Identifier: MIT

#include "platform/linux/x11/InputMethods.h"

#include <algorithm>

#include "platform/linux/x11/XcbReply.h"

namespace tarvik::linuxdesktop {

InputMethods::InputMethods(XcbConnection& connection)
    : connection_(connection), servers_(connection.atom("XIM_SERVERS")) {}

// Input methods list themselves on the root window, also those that most programs reach by D-Bus.
// One that has been killed stays in the list, without an owner of its selection.
bool InputMethods::isRunning() {
    const auto servers = connection_.property(connection_.root(), servers_, XCB_ATOM_ATOM);
    return std::ranges::any_of(servers, [this](xcb_atom_t server) {
        const XcbReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
            connection_.get(), xcb_get_selection_owner(connection_.get(), server), nullptr));
        return reply && reply->owner != XCB_NONE;
    });
}

}  // namespace tarvik::linuxdesktop
