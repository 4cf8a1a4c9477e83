// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/linux/wayland/VirtualKeyboardProtocol.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace tarvik::linuxdesktop {

/// A keyboard of this process on the compositor's first seat. It exists as long as the object: a
/// program may lose the first key of a keyboard that has just appeared. Loop thread only; requests
/// are sent with WaylandConnection::flush().
class VirtualKeyboard {
  public:
    /// Why the compositor gives no virtual keyboard; empty when it does. After its `onReady`.
    static std::string refusal(const WaylandConnection& connection);

    /// `connection` offers virtual keyboards, and outlives the object.
    explicit VirtualKeyboard(WaylandConnection& connection);

    /// Gives the keyboard a map in the format of xkbcommon. False when the system has no memory for
    /// the map. To be called before the first key.
    bool setKeymap(const std::string& keymap);
    /// Sets the modifiers that are held, a mask of the keyboard map.
    void setModifiers(std::uint32_t held);
    /// Presses or releases a key, as the kernel numbers keys.
    void key(std::uint32_t key, bool isDown);

  private:
    struct SeatReleased {
        void operator()(wl_seat* seat) const { wl_seat_destroy(seat); }
    };
    struct KeyboardDestroyed {
        void operator()(zwp_virtual_keyboard_v1* keyboard) const {
            zwp_virtual_keyboard_v1_destroy(keyboard);
        }
    };

    std::unique_ptr<wl_seat, SeatReleased> seat_;
    std::unique_ptr<zwp_virtual_keyboard_v1, KeyboardDestroyed> keyboard_;
};

}  // namespace tarvik::linuxdesktop
