// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <type_traits>

namespace tarvik::linuxdesktop {

/// What the command of a custom shortcut tells the application, in one datagram.
struct ShortcutPress {
    /// When GNOME started the command, by CLOCK_MONOTONIC, to a hundredth of a second.
    std::int64_t nanoseconds = 0;
    /// 1 for the toggle hotkey, 0 for the hold hotkey.
    std::uint64_t isToggle = 0;
};

static_assert(std::has_unique_object_representations_v<ShortcutPress>);

/// The command's word for the toggle hotkey. Any other word is the hold hotkey.
constexpr const char* toggleWord = "toggle";
constexpr const char* holdWord = "hold";

}  // namespace tarvik::linuxdesktop
