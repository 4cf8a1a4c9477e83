// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <vector>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The symbols on the keys, as one reading of the server's keyboard map. Input thread only.
class KeyboardMap {
  public:
    /// What one key yields; a key without groups yields nothing.
    struct Key {
        std::array<std::uint8_t, 4> types{};
        std::uint8_t groupInfo = 0;
        std::uint8_t width = 0;
        std::vector<std::uint32_t> symbols;

        bool isSpare() const { return (groupInfo & 0x0F) == 0; }
        /// The symbol without modifiers while layout `group` is active; 0 when there is none.
        std::uint32_t symbol(std::uint8_t group) const;
        /// Whether the key yields `symbol` and nothing else, however the server has arranged it.
        bool yieldsOnly(std::uint32_t symbol) const;

        /// A key that yields `symbol` in every layout, with or without Shift.
        static Key yielding(std::uint32_t symbol);
    };

    /// Empty when the server does not answer.
    static KeyboardMap read(XcbConnection& connection);

    xcb_keycode_t firstCode() const { return firstCode_; }
    std::size_t size() const { return keys_.size(); }
    bool contains(xcb_keycode_t code) const;
    const Key& operator[](xcb_keycode_t code) const;
    void set(xcb_keycode_t code, Key key);

    /// Writes the keys from `first` to `last` in one change, which every client hears of. Answers
    /// the number of the request.
    std::uint32_t write(XcbConnection& connection, xcb_keycode_t first, xcb_keycode_t last) const;

  private:
    xcb_keycode_t firstCode_ = 0;
    std::vector<Key> keys_;
};

}  // namespace tarvik::linuxdesktop
