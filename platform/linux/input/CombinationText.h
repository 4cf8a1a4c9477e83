// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "platform/EventManager.h"

namespace tarvik::linuxdesktop {

/// The space bar with modifiers of the event manager, as users know the combination:
/// "Alt+Shift+Space". Any thread.
inline std::string combinationText(std::uint32_t modifiers) {
    return std::string((modifiers & platform::optionKeyMask) != 0 ? "Alt+" : "") +
           ((modifiers & platform::shiftKeyMask) != 0 ? "Shift+" : "") + "Space";
}

}  // namespace tarvik::linuxdesktop
