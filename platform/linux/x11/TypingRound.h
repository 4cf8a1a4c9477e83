// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <set>
#include <string_view>

#include "platform/linux/x11/KeyBurst.h"
#include "platform/linux/x11/Keyboard.h"

namespace tarvik::linuxdesktop {

/// As many characters of a text as there are keystrokes for. Input thread only.
struct TypingRound {
    /// The position in the text after the last of them.
    std::size_t end = 0;
    /// What needs a keystroke.
    std::set<char32_t> lacking;
    /// What keeps the keystroke that it has.
    std::set<char32_t> kept;
    /// The keys that cannot be pressed.
    KeysDown unusable;
};

/// The round that begins at `position`, which is its end too where there is no keystroke. A
/// keystroke for one of the characters in `unread` keeps its character, because programs look keys
/// up in the map that is valid then.
TypingRound nextRound(const Keyboard& keyboard, const KeyboardState& state,
                      std::u32string_view characters, std::size_t position,
                      std::set<char32_t> unread);

}  // namespace tarvik::linuxdesktop
