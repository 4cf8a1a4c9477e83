// SPDX-License-Identifier: MIT

#include "platform/linux/x11/GrabWatch.h"

#include "platform/linux/x11/XcbReply.h"

namespace tarvik::linuxdesktop {

GrabWatch::GrabWatch(XcbConnection& connection) : connection_(connection) {
    select(connection.root(), true);
}

void GrabWatch::follow(xcb_window_t front) {
    if (front == front_) {
        return;
    }
    if (front_ != XCB_NONE) {
        select(front_, false);
    }
    front_ = front;
    if (front_ != XCB_NONE) {
        select(front_, true);
    }
}

// Apart from the events that are selected for all keyboards at once, and from the core events that
// others select.
void GrabWatch::select(xcb_window_t window, bool isWanted) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t events;
    } mask{{connection_.keyboard(), 1},
           isWanted ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_FOCUS_IN} |
                          std::uint32_t{XCB_INPUT_XI_EVENT_MASK_FOCUS_OUT}
                    : 0U};
    xcb_input_xi_select_events(connection_.get(), window, 1, &mask.head);
}

GrabWatch::Change GrabWatch::changeIn(const xcb_input_focus_in_event_t& event) {
    switch (event.mode) {
        case XCB_INPUT_NOTIFY_MODE_GRAB:
        case XCB_INPUT_NOTIFY_MODE_WHILE_GRABBED:
            return Change::begun;
        case XCB_INPUT_NOTIFY_MODE_UNGRAB:
            return Change::ended;
        default:
            return Change::none;
    }
}

// A synchronous grab keeps the user's keys in the server until it ends.
bool GrabWatch::isTakenByOther() {
    constexpr std::uint32_t noEvents = 0;
    const XcbReply<xcb_input_xi_grab_device_reply_t> reply(xcb_input_xi_grab_device_reply(
        connection_.get(),
        xcb_input_xi_grab_device(connection_.get(), connection_.root(), XCB_CURRENT_TIME, XCB_NONE,
                                 connection_.keyboard(), XCB_INPUT_GRAB_MODE_22_SYNC,
                                 XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, 1,
                                 &noEvents),
        nullptr));
    if (!reply || reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED) {
        return true;
    }
    xcb_input_xi_ungrab_device(connection_.get(), XCB_CURRENT_TIME, connection_.keyboard());
    return false;
}

}  // namespace tarvik::linuxdesktop
