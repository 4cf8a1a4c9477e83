#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <set>
#include <vector>

#include "platform/linux/x11/KeyGrab.h"
#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The modifier keys that typing has lifted while the user went on holding them. To the server they
/// are up: a hotkey pressed now comes without them, so it is grabbed like that as well. Nothing is
/// pressed again for the user, who may let go at any moment. Input thread only.
class LiftedModifiers {
  public:
    LiftedModifiers(XcbConnection& connection, const Keyboard& keyboard)
        : connection_(connection), keyboard_(keyboard) {}

    bool isEmpty() const { return keys_.empty(); }
    void add(xcb_keycode_t key) { keys_.insert(key); }
    /// The user has let go of `key`; false when it is not one of these.
    bool remove(xcb_keycode_t key) { return keys_.erase(key) != 0; }
    void clear() { keys_.clear(); }
    /// The modifiers that the keys stand for.
    std::uint8_t mask() const;

    /// Grabs each of `hotKeys` as it comes now, and no other ones.
    void grabFor(const std::vector<KeyGrab>& hotKeys);

  private:
    XcbConnection& connection_;
    const Keyboard& keyboard_;
    std::set<xcb_keycode_t> keys_;
    std::set<KeyGrab> grabs_;
};

}  // namespace tarvik::linuxdesktop
