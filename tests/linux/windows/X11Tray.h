// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstring>

#include "platform/linux/windows/X11Server.h"

namespace tarvik::tests {

/// A tray of the X server, as a panel provides it.
class X11Tray {
  public:
    X11Tray() : connection_(xcb_connect(nullptr, nullptr)) {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }
    ~X11Tray() { xcb_disconnect(connection_); }
    X11Tray(const X11Tray&) = delete;
    X11Tray& operator=(const X11Tray&) = delete;

    /// Becomes the tray of the screen and announces itself.
    void start() {
        window_ = xcb_generate_id(connection_);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, root_, 0, 0, 32, 32, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        const xcb_atom_t selection = linuxdesktop::x11Atom(connection_, "_NET_SYSTEM_TRAY_S0");
        xcb_set_selection_owner(connection_, window_, selection, XCB_CURRENT_TIME);
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = root_;
        event.type = linuxdesktop::x11Atom(connection_, "MANAGER");
        event.data.data32[1] = selection;
        event.data.data32[2] = window_;
        xcb_send_event(connection_, 0, root_, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&event));
        xcb_flush(connection_);
    }

    /// Ends the tray.
    void stop() {
        xcb_destroy_window(connection_, window_);
        xcb_flush(connection_);
        hasIcon_ = false;
    }

    /// Whether a program has put its icon into the tray.
    bool hasIcon() {
        constexpr std::uint32_t requestDock = 0;
        const xcb_atom_t opcode = linuxdesktop::x11Atom(connection_, "_NET_SYSTEM_TRAY_OPCODE");
        while (const linuxdesktop::X11Reply<xcb_generic_event_t> event{
            xcb_poll_for_event(connection_)}) {
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE) {
                xcb_client_message_event_t message{};
                std::memcpy(&message, event.get(), sizeof message);
                hasIcon_ =
                    hasIcon_ || (message.type == opcode && message.data.data32[1] == requestDock);
            }
        }
        return hasIcon_;
    }

  private:
    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    bool hasIcon_ = false;
};

}  // namespace tarvik::tests
