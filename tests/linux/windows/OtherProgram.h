#pragma once

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "platform/linux/windows/X11Server.h"

namespace tarvik::tests {

/// Another program's connection to the X server.
class OtherProgram {
  public:
    OtherProgram() : connection_(xcb_connect(nullptr, nullptr)) {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }
    ~OtherProgram() { xcb_disconnect(connection_); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    /// Puts the pointer where no window is: a window manager may give the keyboard to what is under
    /// it.
    void movePointerAway() {
        xcb_warp_pointer(connection_, XCB_WINDOW_NONE, root_, 0, 0, 0, 0, 0, 0);
        const linuxdesktop::X11Reply<xcb_query_pointer_reply_t> arrived(
            xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root_), nullptr));
        EXPECT_TRUE(arrived);
    }

    /// The window that has the keyboard.
    xcb_window_t activeWindow() const {
        const linuxdesktop::X11Reply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        return reply ? reply->focus : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
    }

    std::string activeTitle() const { return text(activeWindow(), "WM_NAME"); }

    /// A window's property as text; empty when it has no such property.
    std::string text(xcb_window_t window, const char* name) const {
        const auto reply = ask(window, name);
        if (!reply) {
            return {};
        }
        return {static_cast<const char*>(xcb_get_property_value(reply.get())),
                static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
    }

    /// The 32-bit values of a window's property; none when it has no such property.
    std::vector<std::uint32_t> property(xcb_window_t window, const char* name) const {
        const auto reply = ask(window, name);
        if (!reply || reply->format != 32) {
            return {};
        }
        const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
        return {values, values + reply->value_len};
    }

    xcb_atom_t atom(const char* name) const { return linuxdesktop::x11Atom(connection_, name); }

    /// Stops being the tray.
    void leaveTray() {
        xcb_destroy_window(connection_, window_);
        xcb_flush(connection_);
        hasGuest_ = false;
    }

    /// Becomes the tray of the screen, and says so.
    void becomeTray() {
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

    /// Whether somebody has asked the tray for a place.
    bool hasGuest() {
        constexpr std::uint32_t requestDock = 0;
        const xcb_atom_t opcode = linuxdesktop::x11Atom(connection_, "_NET_SYSTEM_TRAY_OPCODE");
        while (const linuxdesktop::X11Reply<xcb_generic_event_t> event{
            xcb_poll_for_event(connection_)}) {
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE) {
                xcb_client_message_event_t message{};
                std::memcpy(&message, event.get(), sizeof message);
                hasGuest_ =
                    hasGuest_ || (message.type == opcode && message.data.data32[1] == requestDock);
            }
        }
        return hasGuest_;
    }

  private:
    linuxdesktop::X11Reply<xcb_get_property_reply_t> ask(xcb_window_t window,
                                                         const char* name) const {
        return linuxdesktop::X11Reply<xcb_get_property_reply_t>(xcb_get_property_reply(
            connection_,
            xcb_get_property(connection_, 0, window, linuxdesktop::x11Atom(connection_, name),
                             XCB_ATOM_ANY, 0, 1024),
            nullptr));
    }

    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    bool hasGuest_ = false;
};

}  // namespace tarvik::tests
