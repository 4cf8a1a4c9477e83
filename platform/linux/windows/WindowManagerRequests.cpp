// SPDX-License-Identifier: MIT

#include "platform/linux/windows/WindowManagerRequests.h"

#include <xcb/xcb.h>

#include <QWidget>
#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "platform/linux/windows/UserAction.h"
#include "platform/linux/windows/X11Server.h"

namespace tarvik::linuxdesktop {

namespace {

void sendToWindowManager(xcb_connection_t* connection, xcb_window_t window, std::string_view type,
                         const std::array<std::uint32_t, 4>& data) {
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = x11Atom(connection, type);
    std::ranges::copy(data, event.data.data32);
    xcb_send_event(connection, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection);
}

// Window managers let an application take the keyboard only right after input to its own windows,
// and a hotkey is none. A request that names a pager as its source is always granted.
void requestActivation(xcb_connection_t* connection, xcb_window_t window, xcb_timestamp_t time) {
    constexpr std::uint32_t fromPager = 2;
    sendToWindowManager(connection, window, "_NET_ACTIVE_WINDOW", {fromPager, time});
}

}  // namespace

// A window manager reads the property when the window appears, and removes it when the window is
// hidden.
void showOnAllDesktops(QWidget& window) {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr || window.isVisible()) {
        return;
    }
    constexpr std::uint32_t everyDesktop = 0xFFFFFFFF;
    constexpr std::uint8_t bits = 32;
    xcb_change_property(
        connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
        x11Atom(connection, "_NET_WM_DESKTOP"), XCB_ATOM_CARDINAL, bits, 1, &everyDesktop);
}

// The user time of a window may stand on another window, and the window says on which.
void clearUserTime(QWidget& window) {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr) {
        return;
    }
    auto holder = static_cast<xcb_window_t>(window.winId());
    const X11Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection,
        xcb_get_property(connection, 0, holder, x11Atom(connection, "_NET_WM_USER_TIME_WINDOW"),
                         XCB_ATOM_WINDOW, 0, 1),
        nullptr));
    if (reply && reply->value_len == 1) {
        holder = *static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
    }
    constexpr std::uint32_t noUserAction = 0;
    constexpr std::uint8_t bits = 32;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, holder,
                        x11Atom(connection, "_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, bits, 1,
                        &noUserAction);
}

// Qt asks for both states when a window appears.
void keepAbove(QWidget& window, bool isAbove) {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr) {
        return;
    }
    constexpr std::uint32_t fromApplication = 1;
    sendToWindowManager(connection, static_cast<xcb_window_t>(window.winId()), "_NET_WM_STATE",
                        {isAbove ? 1U : 0U, x11Atom(connection, "_NET_WM_STATE_ABOVE"),
                         x11Atom(connection, "_NET_WM_STATE_STAYS_ON_TOP"), fromApplication});
}

void preferDarkFrame(QWidget& window) {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr) {
        return;
    }
    constexpr std::string_view variant = "dark";
    constexpr std::uint8_t bits = 8;
    xcb_change_property(
        connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
        x11Atom(connection, "_GTK_THEME_VARIANT"), x11Atom(connection, "UTF8_STRING"), bits,
        static_cast<std::uint32_t>(variant.size()), variant.data());
}

void bringToFront(QWidget& window) {
    window.raise();
    const std::optional<std::uint32_t> time = UserAction::currentTime();
    if (!time) {
        return;
    }
    window.activateWindow();
    if (xcb_connection_t* connection = x11Connection()) {
        requestActivation(connection, static_cast<xcb_window_t>(window.winId()), *time);
    }
}

}  // namespace tarvik::linuxdesktop
