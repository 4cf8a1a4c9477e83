// SPDX-License-Identifier: MIT

#include "platform/linux/x11/LayoutStrokes.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon.h>

namespace tarvik::linuxdesktop {

namespace {

constexpr std::uint8_t maxGroups = 4;

// The keypad's symbols depend on Num Lock, and editing keys act instead of typing.
bool typesItself(std::uint32_t symbol) {
    return symbol < XKB_KEY_BackSpace || symbol > XKB_KEY_Delete;
}

// Programs decode these symbols with different tables: katakana's punctuation, technical and
// special symbols, publishing, APL and Hangul.
bool isAmbiguous(std::uint32_t symbol) {
    switch (symbol >> 8) {
        case 0x04:
        case 0x08:
        case 0x09:
        case 0x0A:
        case 0x0B:
        case 0x0E:
            return true;
        default:
            return false;
    }
}

}  // namespace

LayoutStrokes::LayoutStrokes(const KeyboardMap& map,
                             const std::function<bool(xcb_keycode_t)>& isExcluded) {
    for (const bool isShifted : {false, true}) {
        for (std::size_t i = 0; i < map.size(); ++i) {
            const Keystroke stroke{static_cast<xcb_keycode_t>(map.firstCode() + i), isShifted};
            if (map[stroke.key].isSpare() || isExcluded(stroke.key)) {
                continue;
            }
            for (std::uint8_t group = 0; group < maxGroups; ++group) {
                const std::uint32_t symbol = map.symbol(stroke, group);
                const char32_t character = xkb_keysym_to_utf32(symbol);
                if (character != 0 && typesItself(symbol) && !isAmbiguous(symbol)) {
                    strokes_[{group, character}].push_back(stroke);
                }
            }
        }
    }
}

std::span<const Keystroke> LayoutStrokes::of(char32_t character, std::uint8_t group) const {
    const auto found = strokes_.find({group, character});
    return found == strokes_.end() ? std::span<const Keystroke>() : found->second;
}

}  // namespace tarvik::linuxdesktop
