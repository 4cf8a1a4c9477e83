// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <compare>
#include <cstdint>
#include <optional>

#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// A key with modifiers whose events come to this client, wherever the focus is. Input thread only.
struct KeyGrab {
    enum class Mode {
        /// Every key comes to this client from the press to the release.
        asynchronous,
        /// The same, but the keyboard is frozen at the press until answerPress() is called.
        synchronous
    };

    xcb_keycode_t key = 0;
    std::uint8_t modifiers = 0;
    /// The modifiers of lock keys, each of which may be on or off.
    std::uint8_t locks = 0;
    Mode mode = Mode::asynchronous;

    auto operator<=>(const KeyGrab&) const = default;

    /// False when another program has one of the combinations. Making a grab again puts this client
    /// in front of all others with the same grab.
    bool make(XcbConnection& connection) const;
    /// Makes a grab again that has been made, without waiting for the server.
    void raise(XcbConnection& connection) const;
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
