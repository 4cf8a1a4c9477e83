#include "platform/linux/windows/WindowHints.h"

#include <xcb/xcb.h>

#include <QWidget>
#include <cstdint>
#include <string_view>

#include "platform/linux/windows/X11Server.h"

namespace tarvik::linuxdesktop {

// A window manager reads the property when the window appears, and removes it when it is hidden.
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

}  // namespace tarvik::linuxdesktop
