// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// A keyboard map whose keys are the characters of a text. One thread.
///
/// Only keys are used that every program takes for text keys, whatever their symbols are. The map
/// keeps the characters of earlier texts as long as there is room, so that it seldom changes.
class TextKeymap {
  public:
    /// A key as the kernel numbers it, and the modifiers that choose the character on it.
    struct Stroke {
        std::uint32_t key = 0;
        std::uint32_t modifiers = 0;
    };

    static constexpr std::size_t keyCount = 47;
    /// How many different characters fit.
    static constexpr std::size_t capacity = keyCount * 4;
    /// The modifier that Alt is.
    static constexpr std::uint32_t altModifier = 8;

    /// A map with the printable characters of ASCII.
    TextKeymap();

    /// The length of the longest beginning of `text` whose different characters fit.
    static std::size_t fittingLength(std::u32string_view text);
    /// Makes the map have every character of a text that fits. Returns whether the map has changed.
    bool cover(std::u32string_view text);
    /// How to type a character that is on the map.
    Stroke strokeOf(char32_t character) const;
    /// A key that types nothing and runs no command.
    static Stroke neutralStroke();

    /// The map in the format of xkbcommon.
    std::string text() const;

  private:
    // Where a character is, and when it was last asked for.
    struct Place {
        std::size_t slot = 0;
        std::uint64_t lastUse = 0;
    };

    std::size_t freeSlot();

    std::array<char32_t, capacity> slots_{};
    std::size_t used_ = 0;
    std::uint64_t use_ = 0;
    std::map<char32_t, Place> places_;
};

}  // namespace tarvik::linuxdesktop
