// SPDX-License-Identifier: MIT

#include "platform/linux/windows/FloatingLayer.h"

#include <xcb/xcb.h>

#include <QCoreApplication>
#include <QWidget>

#include "platform/linux/windows/WindowManagerRequests.h"
#include "platform/linux/windows/X11Server.h"

namespace tarvik::linuxdesktop {

namespace {

xcb_window_t rootWindow(xcb_connection_t* connection) {
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

}  // namespace

FloatingLayer::FloatingLayer(QWidget& window) : window_(window) {}

void FloatingLayer::enter() {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr) {
        return;
    }
    if (activeWindowProperty_ == 0) {
        activeWindowProperty_ = x11Atom(connection, "_NET_ACTIVE_WINDOW");
    }
    keepAbove(window_, true);
    current_ = activeWindow();
    // A filter that is installed twice is called once.
    QCoreApplication::instance()->installNativeEventFilter(this);
}

// Qt takes notice of every change of the root window's properties, and of the focus of its windows.
bool FloatingLayer::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t") {
        return false;
    }
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    switch (event->response_type & 0x7f) {
        case XCB_PROPERTY_NOTIFY: {
            const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event);
            if (change->window == rootWindow(x11Connection()) &&
                change->atom == activeWindowProperty_) {
                followActiveWindow();
            }
            break;
        }
        case XCB_FOCUS_IN:
            // A short visit may be over when the property is read, and then only this event tells
            // of it.
            if (reinterpret_cast<const xcb_focus_in_event_t*>(event)->event == window_.winId()) {
                current_ = static_cast<std::uint32_t>(window_.winId());
            }
            break;
    }
    return false;
}

void FloatingLayer::followActiveWindow() {
    const std::uint32_t active = activeWindow();
    // Between two windows, and in a menu, no window is active.
    if (active == 0 || active == current_) {
        return;
    }
    current_ = active;
    if (active != window_.winId()) {
        QCoreApplication::instance()->removeNativeEventFilter(this);
        keepAbove(window_, false);
    }
}

std::uint32_t FloatingLayer::activeWindow() const {
    xcb_connection_t* connection = x11Connection();
    const X11Reply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection,
                               xcb_get_property(connection, 0, rootWindow(connection),
                                                activeWindowProperty_, XCB_ATOM_WINDOW, 0, 1),
                               nullptr));
    return reply && reply->value_len == 1
               ? *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()))
               : 0;
}

}  // namespace tarvik::linuxdesktop
