// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/windows/X11Server.h"

namespace tarvik::tests {

/// Another program on the X server. It sees which window has the keyboard, and the properties of
/// windows.
class X11Client {
  public:
    X11Client() : connection_(xcb_connect(nullptr, nullptr)) {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }
    ~X11Client() { xcb_disconnect(connection_); }
    X11Client(const X11Client&) = delete;
    X11Client& operator=(const X11Client&) = delete;

    /// Puts the pointer where no window is, because a window manager may give the keyboard to the
    /// window under the pointer.
    void movePointerAway() {
        xcb_warp_pointer(connection_, XCB_WINDOW_NONE, root_, 0, 0, 0, 0, 0, 0);
        const linuxdesktop::X11Reply<xcb_query_pointer_reply_t> arrived(
            xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root_), nullptr));
        EXPECT_TRUE(arrived);
    }

    /// The windows that the window manager manages.
    std::vector<std::uint32_t> managedWindows() const {
        return property(root_, "_NET_CLIENT_LIST");
    }

    /// Asks the window manager for the size of a new window's frame. The answer is a property of
    /// that window, _NET_FRAME_EXTENTS, and comes once all that happened before is handled.
    xcb_window_t askForFrame() {
        const xcb_window_t window = xcb_generate_id(connection_);
        xcb_create_window(connection_, 0, window, root_, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_client_message_event_t request{};
        request.response_type = XCB_CLIENT_MESSAGE;
        request.format = 32;
        request.window = window;
        request.type = atom("_NET_REQUEST_FRAME_EXTENTS");
        xcb_send_event(connection_, 0, root_,
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&request));
        return window;
    }

    xcb_window_t root() const { return root_; }

    /// The window that has the keyboard.
    xcb_window_t activeWindow() const {
        const linuxdesktop::X11Reply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        return reply ? reply->focus : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
    }

    std::string activeTitle() const { return text(activeWindow(), "WM_NAME"); }

    /// A window's property as text; empty without the property.
    std::string text(xcb_window_t window, const char* name) const {
        const auto reply = ask(window, name);
        if (!reply) {
            return {};
        }
        return {static_cast<const char*>(xcb_get_property_value(reply.get())),
                static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
    }

    /// The 32-bit values of a window's property; none without the property.
    std::vector<std::uint32_t> property(xcb_window_t window, const char* name) const {
        const auto reply = ask(window, name);
        if (!reply || reply->format != 32) {
            return {};
        }
        const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
        return {values, values + reply->value_len};
    }

    xcb_atom_t atom(const char* name) const { return linuxdesktop::x11Atom(connection_, name); }

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
};

}  // namespace tarvik::tests
