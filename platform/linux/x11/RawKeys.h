// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>

#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The selection of the server's raw key events, and the keys that the user holds according to
/// them. Raw events tell of every key, wherever the focus is and whoever has grabbed the keyboard.
/// Each key of the user is a wake-up while they are selected. Input thread only.
class RawKeys {
  public:
    explicit RawKeys(XcbConnection& connection) : connection_(connection) {}

    /// Chooses which events come. Where presses come from here on and did not before, the keys that
    /// are down are read, and the answer is true.
    bool select(bool hasPresses, bool hasReleases);
    /// Reads the keys that are down anew: a keyboard is gone, and with it the releases of its keys.
    void reread();

    /// A key went down. False for the repeat of a key that was down already.
    bool press(xcb_keycode_t key) {
        const bool isRepeat = down_[key];
        down_[key] = true;
        return !isRepeat;
    }
    /// A key went up.
    void release(xcb_keycode_t key) { down_[key] = false; }

    // What follows is up to date only while presses are selected.

    bool isDown(xcb_keycode_t key) const { return down_[key]; }
    /// The modifiers that the keys stand for which are down.
    std::uint8_t modifiers(const Keyboard& keyboard) const;
    /// The sequence number of the request that read the keys.
    std::uint32_t readSequence() const { return readSequence_; }

  private:
    XcbConnection& connection_;
    KeysDown down_;
    std::uint32_t readSequence_ = 0;
    bool hasPresses_ = false;
    bool hasReleases_ = false;
};

}  // namespace tarvik::linuxdesktop
