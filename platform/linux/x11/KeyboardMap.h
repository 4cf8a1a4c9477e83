// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <vector>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The two symbols of a key for typed text: without Shift and with Shift.
using SymbolPair = std::array<std::uint32_t, 2>;

/// One press of a key, with or without Shift.
struct Keystroke {
    xcb_keycode_t key = 0;
    bool isShifted = false;

    bool operator==(const Keystroke&) const = default;
};

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
        /// Whether the key yields these symbols and no others, however the server has arranged
        /// them.
        bool yieldsOnly(const SymbolPair& symbols) const;

        /// A key that yields these symbols in every layout.
        static Key yielding(const SymbolPair& symbols);
    };

    /// Empty when the server does not answer.
    static KeyboardMap read(XcbConnection& connection);

    xcb_keycode_t firstCode() const { return firstCode_; }
    std::size_t size() const { return keys_.size(); }
    bool contains(xcb_keycode_t code) const;
    const Key& operator[](xcb_keycode_t code) const;
    void set(xcb_keycode_t code, Key key);
    /// The symbol of a keystroke while layout `group` is active; 0 when there is none.
    std::uint32_t symbol(Keystroke stroke, std::uint8_t group) const;

    /// Writes the keys from `first` to `last` in one change, which every client hears of. Answers
    /// the number of the request.
    std::uint32_t write(XcbConnection& connection, xcb_keycode_t first, xcb_keycode_t last) const;

  private:
    xcb_keycode_t firstCode_ = 0;
    std::vector<Key> keys_;
    // By type: the level that Shift alone chooses.
    std::vector<std::uint8_t> shiftLevels_;
};

}  // namespace tarvik::linuxdesktop
