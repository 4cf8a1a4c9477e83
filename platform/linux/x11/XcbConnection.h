// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"
#include "platform/linux/x11/XcbReply.h"

namespace tarvik::linuxdesktop {

/// A connection to the X server, with the extensions that hotkeys and typing need. One thread
/// at a time, unless a line says otherwise.
class XcbConnection {
  public:
    /// Connects to the server that DISPLAY names. An error when there is none or it lacks XInput
    /// 2.1, XTEST or XKB. Waits for the server without a timeout. Any thread.
    static Result<std::unique_ptr<XcbConnection>> open();

    ~XcbConnection();
    XcbConnection(const XcbConnection&) = delete;
    XcbConnection& operator=(const XcbConnection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    int descriptor() const { return xcb_get_file_descriptor(connection_); }
    xcb_window_t root() const { return root_; }
    /// Whether one client has made both windows.
    bool sameClient(xcb_window_t one, xcb_window_t other) const;
    /// Whether the server serves the X programs of a Wayland session.
    bool isXwayland();
    /// The XInput device that all keyboards act through.
    std::uint16_t keyboard() const { return keyboard_; }
    /// The XInput devices of the keyboards, the synthetic ones included.
    const std::vector<std::uint16_t>& keyboards() const { return keyboards_; }
    /// Finds the keyboards again. Waits for the server.
    void findKeyboards();
    /// The XInput device that presses the keys which XTEST is asked for without a device.
    std::uint16_t testKeyboard() const { return testKeyboard_; }
    /// The XInput device of the keyboard of a Wayland session; 0 on any other server.
    std::uint16_t xwaylandKeyboard() const { return xwaylandKeyboard_; }
    std::uint8_t xinputOpcode() const { return xinputOpcode_; }
    std::uint8_t xinputFirstEvent() const { return xinputFirstEvent_; }
    std::uint8_t xkbFirstEvent() const { return xkbFirstEvent_; }
    /// Whether an error says that a keyboard does not exist.
    bool isMissingKeyboard(const xcb_generic_error_t& error) const;

    /// True once the server is gone. Every request is ignored from then on. Any thread.
    bool isBroken() const { return xcb_connection_has_error(connection_) != 0; }
    /// Shuts the connection down, so that a thread that waits for the server goes on. Any thread.
    void shutDown();

    /// Waits until the server has processed every request before.
    void synchronise();

    /// Chooses which core events of a window come here. The choices of several owners stand beside
    /// each other.
    void selectEvents(xcb_window_t window, std::uint32_t mask, const void* owner = nullptr);
    /// A window is gone, and with it every choice.
    void forgetEvents(xcb_window_t window) { chosenEvents_.erase(window); }
    void selectRootEvents(std::uint32_t mask) { selectEvents(root_, mask); }

    /// The server's number for a name; 0 when the server is gone.
    xcb_atom_t atom(std::string_view name);
    /// The 32-bit items of a property; empty when there is no property of this type.
    std::vector<std::uint32_t> property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type);
    /// The first item of such a property.
    std::optional<std::uint32_t> firstOfProperty(xcb_window_t window, xcb_atom_t name,
                                                 xcb_atom_t type);
    /// A property as text; empty when there is none.
    std::string textOfProperty(xcb_window_t window, xcb_atom_t name);
    /// The process of the client that made a window, as the server knows it. Empty when the window
    /// does not exist, and when the server does not know, as for a client on another machine.
    std::optional<std::int32_t> processOfClient(xcb_window_t window);

  private:
    explicit XcbConnection(xcb_connection_t* connection) : connection_(connection) {}
    const char* useExtensions();
    bool namesProcesses();

    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_NONE;
    std::uint16_t keyboard_ = 0;
    std::uint16_t testKeyboard_ = 0;
    std::uint16_t xwaylandKeyboard_ = 0;
    std::vector<std::uint16_t> keyboards_;
    std::uint8_t xinputOpcode_ = 0;
    std::uint8_t xinputFirstEvent_ = 0;
    std::uint8_t xinputFirstError_ = 0;
    std::uint8_t xkbFirstEvent_ = 0;
    bool knowsProcesses_ = false;
    // By window and owner.
    std::map<xcb_window_t, std::map<const void*, std::uint32_t>> chosenEvents_;
};

}  // namespace tarvik::linuxdesktop
