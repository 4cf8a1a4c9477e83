#include "platform/linux/windows/WindowActivation.h"

#include <xcb/xcb.h>

#include <QWidget>
#include <cstdint>

#include "platform/linux/windows/UserAction.h"
#include "platform/linux/windows/X11Server.h"

namespace tarvik::linuxdesktop {

namespace {

// Window managers let an application take the keyboard only right after input to its own windows,
// and a hotkey is none. A request that says it comes from a pager is always granted.
void requestActivation(xcb_connection_t* connection, xcb_window_t window, xcb_timestamp_t time) {
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    constexpr std::uint32_t fromPager = 2;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = x11Atom(connection, "_NET_ACTIVE_WINDOW");
    event.data.data32[0] = fromPager;
    event.data.data32[1] = time;
    xcb_send_event(connection, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection);
}

}  // namespace

void bringToFront(QWidget& window) {
    window.raise();
    window.activateWindow();
    if (xcb_connection_t* connection = x11Connection()) {
        requestActivation(connection, static_cast<xcb_window_t>(window.winId()),
                          UserAction::presentTime());
    }
}

}  // namespace tarvik::linuxdesktop
