// SPDX-License-Identifier: MIT

#include "platform/linux/x11/TypingRound.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// Keystrokes that are left over, so that a program that stops with all others unread holds up no
// other program.
constexpr std::size_t reservedStrokes = 8;

}  // namespace

TypingRound nextRound(const Keyboard& keyboard, const KeyboardState& state,
                      std::u32string_view characters, std::size_t position,
                      std::set<char32_t> unread) {
    TypingRound round{position, {}, std::move(unread), state.unusable};
    std::set<char32_t> seen;
    for (; round.end < characters.size(); ++round.end) {
        const char32_t character = characters[round.end];
        if (!seen.insert(character).second) {
            continue;
        }
        const bool isNewlyKept = round.kept.insert(character).second;
        if (!keyboard.strokeFor(character, state.group, state.unusable)) {
            round.lacking.insert(character);
        }
        const std::size_t free = keyboard.freeStrokes(round.kept, state.unusable);
        const std::size_t reserved = std::min(free, reservedStrokes);
        if (round.lacking.size() > std::max(free - reserved, reserved)) {
            // The next round keeps the character. This round may need its keystroke.
            round.lacking.erase(character);
            if (isNewlyKept) {
                round.kept.erase(character);
            }
            break;
        }
    }
    return round;
}

}  // namespace tarvik::linuxdesktop
