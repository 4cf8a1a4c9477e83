// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <compare>
#include <cstdint>
#include <optional>

#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// A key with modifiers whose press comes to this client, wherever the focus is. Input thread only.
struct KeyGrab {
    enum class Mode {
        /// The press comes from the keyboard itself, before the master keyboard and with it any
        /// other client gets the key. Every key of this keyboard comes from the press to the
        /// release.
        asynchronous,
        /// The press comes from the master keyboard, which is frozen until answerPress() is called.
        synchronous
    };

    xcb_keycode_t key = 0;
    std::uint8_t modifiers = 0;
    /// The modifiers of lock keys, each of which may be on or off.
    std::uint8_t locks = 0;
    Mode mode = Mode::asynchronous;

    auto operator<=>(const KeyGrab&) const = default;

    /// False when another program has one of the combinations.
    bool make(XcbConnection& connection) const;
    /// Leaves what `kept` consists of. Waits for the server, so that the combination is free for
    /// others afterwards.
    void drop(XcbConnection& connection, const std::optional<KeyGrab>& kept = {}) const;
};

/// The grab of the space bar with these modifiers, a mask of the event manager, and every state of
/// the lock keys. Empty when the keyboard lacks one of the keys.
std::optional<KeyGrab> spaceBarGrab(const Keyboard& keyboard, std::uint32_t modifiers);

/// Thaws the keyboard after a press. A press that is not ours goes to the client that would have
/// got it without the grab. Without effect unless the keyboard is frozen.
enum class PressAnswer { ours, notOurs };
void answerPress(XcbConnection& connection, PressAnswer answer);

}  // namespace tarvik::linuxdesktop
