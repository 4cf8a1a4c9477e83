// SPDX-License-Identifier: MIT

#include "platform/linux/x11/InputMethods.h"

#include "platform/linux/x11/XcbReply.h"

namespace tarvik::linuxdesktop {

InputMethods::InputMethods(XcbConnection& connection)
    : connection_(connection),
      servers_(connection.atom("XIM_SERVERS")),
      ibus_(connection.atom("@server=ibus")) {}

// Input methods list themselves on the root window, also those that most programs reach by D-Bus.
// One that has been killed stays in the list, without an owner of its selection.
InputMethods::Running InputMethods::find() {
    Running running;
    for (const xcb_atom_t server :
         connection_.property(connection_.root(), servers_, XCB_ATOM_ATOM)) {
        const XcbReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
            connection_.get(), xcb_get_selection_owner(connection_.get(), server), nullptr));
        const bool isRunning = reply && reply->owner != XCB_NONE;
        running.isAny = running.isAny || isRunning;
        running.isIBus = running.isIBus || (isRunning && server == ibus_);
        if (isRunning && (!running.isIBus || server == ibus_)) {
            running.process = connection_.processOfClient(reply->owner);
        }
    }
    return running;
}

}  // namespace tarvik::linuxdesktop
