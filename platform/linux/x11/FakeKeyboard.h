// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>

#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Presses keys as if one of the server's keyboards did. Input thread only.
class FakeKeyboard {
  public:
    /// `device` is the keyboard's XInput device. The server's synthetic keyboard presses the keys
    /// where `device` is 0, or a number that the request has no room for.
    explicit FakeKeyboard(XcbConnection& connection, std::uint16_t device = 0);

    /// The keyboard's XInput device.
    std::uint16_t device() const { return device_ != 0 ? device_ : connection_->testKeyboard(); }
    /// Answers the sequence number of the request.
    std::uint32_t press(xcb_keycode_t key) { return send(true, key); }
    /// The same. The release of a key that is up does nothing.
    std::uint32_t release(xcb_keycode_t key) { return send(false, key); }
    /// The keys that are down on this keyboard; none when the keyboard is gone. Waits for the
    /// server.
    KeysDown keysDown() const;

  private:
    std::uint32_t send(bool isDown, xcb_keycode_t key);

    XcbConnection* connection_;
    std::uint8_t device_;
};

}  // namespace tarvik::linuxdesktop
