// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <utility>
#include <vector>

#include "platform/linux/x11/KeyboardMap.h"

namespace tarvik::linuxdesktop {

/// Which keystrokes of the user's own layouts type which character. Input thread only.
class LayoutStrokes {
  public:
    LayoutStrokes() = default;
    /// The keys of `map` but those for which `isExcluded` holds.
    LayoutStrokes(const KeyboardMap& map, const std::function<bool(xcb_keycode_t)>& isExcluded);

    /// The keystrokes for `character` while layout `group` is active, those without Shift first.
    std::span<const Keystroke> of(char32_t character, std::uint8_t group) const;

  private:
    std::map<std::pair<std::uint8_t, char32_t>, std::vector<Keystroke>> strokes_;
};

}  // namespace tarvik::linuxdesktop
