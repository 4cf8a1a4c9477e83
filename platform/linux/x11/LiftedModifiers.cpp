// SPDX-License-Identifier: MIT

#include "platform/linux/x11/LiftedModifiers.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

std::uint8_t LiftedModifiers::mask() const {
    constexpr unsigned modifierBits = 8;
    unsigned mask = 0;
    for (unsigned bit = 1; bit < 1U << modifierBits && !keys_.empty(); bit <<= 1) {
        const bool isLifted =
            std::ranges::any_of(keyboard_.modifierKeys(static_cast<std::uint8_t>(bit)),
                                [this](xcb_keycode_t key) { return keys_.contains(key); });
        mask |= isLifted ? bit : 0U;
    }
    return static_cast<std::uint8_t>(mask);
}

// Before the grabs are dropped, the user may have let go and pressed the space bar for a blank. So
// the grabs are synchronous. A combination that another program has stays with that program.
void LiftedModifiers::grabFor(const std::vector<KeyGrab>& hotKeys) {
    const std::uint8_t lifted = mask();
    std::set<KeyGrab> wanted;
    for (KeyGrab grab : hotKeys) {
        if ((grab.modifiers & lifted) != 0) {
            grab.mode = KeyGrab::Mode::synchronous;
            grab.modifiers = static_cast<std::uint8_t>(grab.modifiers & ~lifted);
            wanted.insert(grab);
        }
    }
    // The server would take the end of such a grab for the end of the hotkey's own.
    std::erase_if(wanted, [&](const KeyGrab& grab) {
        return std::ranges::any_of(hotKeys, [&](const KeyGrab& hotKey) {
            return hotKey.key == grab.key && hotKey.modifiers == grab.modifiers;
        });
    });
    for (const KeyGrab& grab : grabs_) {
        if (!wanted.contains(grab)) {
            grab.drop(connection_);
        }
    }
    grabs_ = std::move(wanted);
    for (const KeyGrab& grab : grabs_) {
        grab.make(connection_);
    }
}

}  // namespace tarvik::linuxdesktop
