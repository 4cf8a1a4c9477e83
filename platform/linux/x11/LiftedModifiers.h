// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <set>
#include <vector>

#include "platform/linux/x11/KeyGrab.h"
#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The modifier keys that typing has lifted while the user went on holding them. For the server the
/// keys are up. A hotkey that is pressed now comes without these modifiers, so the combination is
/// grabbed without them too. Input thread only.
class LiftedModifiers {
  public:
    LiftedModifiers(XcbConnection& connection, const Keyboard& keyboard)
        : connection_(connection), keyboard_(keyboard) {}

    bool isEmpty() const { return keys_.empty(); }
    void add(xcb_keycode_t key) { keys_.insert(key); }
    /// The user has let go of `key`. False when `key` is not a lifted one.
    bool remove(xcb_keycode_t key) { return keys_.erase(key) != 0; }
    void clear() { keys_.clear(); }
    /// The modifiers that the keys stand for.
    std::uint8_t mask() const;

    /// Grabs each of `hotKeys` without the lifted modifiers where that is no hotkey too. Drops the
    /// grabs of earlier calls that are not among these.
    void grabFor(const std::vector<KeyGrab>& hotKeys);

  private:
    XcbConnection& connection_;
    const Keyboard& keyboard_;
    std::set<xcb_keycode_t> keys_;
    std::set<KeyGrab> grabs_;
};

}  // namespace tarvik::linuxdesktop
