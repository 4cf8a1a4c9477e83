#pragma once

#include <xcb/xcb.h>

#include <compare>
#include <cstdint>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// A key with modifiers that comes to this client, wherever the focus is. Input thread only.
struct KeyGrab {
    enum class Mode {
        /// The keyboard is this client's from the press to the release.
        takes,
        /// The same, but the keyboard stands still at the press until answerPress() is called.
        asks
    };

    xcb_keycode_t key = 0;
    std::uint8_t modifiers = 0;
    /// The modifiers of lock keys, each of which may be on or off.
    std::uint8_t locks = 0;
    Mode mode = Mode::takes;

    auto operator<=>(const KeyGrab&) const = default;

    /// False when another program has one of the combinations. Making a grab anew puts this client
    /// in front of everybody else who has made it.
    bool make(XcbConnection& connection) const;
    /// Waits for the server, so that the combination is free for others afterwards.
    void drop(XcbConnection& connection) const;
};

/// Lets the keyboard go on after a press: it was meant for this client, or goes to whom it would
/// have gone to without the grab. Without effect unless the keyboard stands still.
enum class PressAnswer { ours, notOurs };
void answerPress(XcbConnection& connection, PressAnswer answer);

}  // namespace tarvik::linuxdesktop
