// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/TextKeymap.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace tarvik::linuxdesktop {

namespace {

// The keys of the main block that have characters. Chromium takes any other key for what its
// position means.
constexpr std::array<std::uint32_t, TextKeymap::keyCount> textKeys{
    2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27,
    30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 43, 44, 45, 46, 47, 48, 49, 50, 51, 52, 53};
// No keyboard has the key. An X program that looks it up late, in the map of the user's keyboard,
// finds no symbol there.
constexpr std::uint32_t neutralKey = 240;
// xkbcommon numbers keys as X11 does.
constexpr std::uint32_t x11Offset = 8;

constexpr std::uint32_t shiftModifier = 0x01;
constexpr std::uint32_t fifthModifier = 0x80;
constexpr std::array<std::uint32_t, 4> levelModifiers{0, shiftModifier, fifthModifier,
                                                      shiftModifier | fifthModifier};

// An X server keeps its old map unless the first four types are there. Xwayland 22.1 crashes
// without an indicator when one of its programs asks for the indicators, as programs of Qt do.
constexpr std::string_view typesAndCompatibility = R"(xkb_types "text" {
  virtual_modifiers NumLock;
  type "ONE_LEVEL" { modifiers = none; map[none] = Level1; level_name[Level1] = "1"; };
  type "TWO_LEVEL" {
    modifiers = Shift;
    map[none] = Level1; map[Shift] = Level2;
    level_name[Level1] = "1"; level_name[Level2] = "2";
  };
  type "ALPHABETIC" {
    modifiers = Shift + Lock;
    map[none] = Level1; map[Shift] = Level2; map[Lock] = Level2;
    level_name[Level1] = "1"; level_name[Level2] = "2";
  };
  type "KEYPAD" {
    modifiers = Shift + NumLock;
    map[none] = Level1; map[Shift] = Level2; map[NumLock] = Level2;
    level_name[Level1] = "1"; level_name[Level2] = "2";
  };
  type "TEXT" {
    modifiers = Shift + Mod5;
    map[none] = Level1; map[Shift] = Level2; map[Mod5] = Level3; map[Shift + Mod5] = Level4;
    level_name[Level1] = "1"; level_name[Level2] = "2";
    level_name[Level3] = "3"; level_name[Level4] = "4";
  };
};
xkb_compatibility "text" {
  virtual_modifiers NumLock;
  interpret Any + AnyOf(all) { action = NoAction(); };
  indicator "Caps Lock" { whichModState = locked; modifiers = Lock; };
};
)";

std::string keyName(std::uint32_t key) {
    return "<K" + std::to_string(key) + ">";
}

std::string symbolName(char32_t character) {
    if (character == 0) {
        return "NoSymbol";
    }
    std::array<char, 16> name{};
    std::snprintf(name.data(), name.size(), "U%04X", static_cast<unsigned>(character));
    return name.data();
}

}  // namespace

TextKeymap::TextKeymap() {
    std::u32string printable;
    // Most texts are small letters and blanks, which then need no modifiers.
    for (char32_t character = U'a'; character <= U'z'; ++character) {
        printable += character;
    }
    for (char32_t character = U' '; character <= U'~'; ++character) {
        printable += character;
    }
    cover(printable);
}

std::size_t TextKeymap::fittingLength(std::u32string_view text) {
    std::set<char32_t> different;
    std::size_t length = 0;
    for (const char32_t character : text) {
        if (different.insert(character).second && different.size() > capacity) {
            break;
        }
        ++length;
    }
    return length;
}

bool TextKeymap::cover(std::u32string_view text) {
    ++use_;
    std::u32string missing;
    for (const char32_t character : text) {
        if (const auto place = places_.find(character); place != places_.end()) {
            place->second.lastUse = use_;
        } else {
            missing += character;
        }
    }
    for (const char32_t character : missing) {
        if (!places_.contains(character)) {
            const std::size_t slot = freeSlot();
            slots_[slot] = character;
            places_[character] = {slot, use_};
        }
    }
    return !missing.empty();
}

// Where there is none, the character goes that was not used for the longest time.
std::size_t TextKeymap::freeSlot() {
    if (used_ < capacity) {
        return used_++;
    }
    const auto oldest = std::ranges::min_element(
        places_, {}, [](const auto& entry) { return entry.second.lastUse; });
    const std::size_t slot = oldest->second.slot;
    places_.erase(oldest);
    return slot;
}

TextKeymap::Stroke TextKeymap::strokeOf(char32_t character) const {
    const std::size_t slot = places_.at(character).slot;
    return {textKeys[slot % keyCount], levelModifiers[slot / keyCount]};
}

TextKeymap::Stroke TextKeymap::neutralStroke() {
    return {neutralKey, 0};
}

std::string TextKeymap::text() const {
    std::string codes;
    std::string symbols;
    const auto define = [&codes](std::uint32_t key) {
        codes += "  " + keyName(key) + " = " + std::to_string(key + x11Offset) + ";\n";
    };
    for (std::size_t key = 0; key < keyCount; ++key) {
        define(textKeys[key]);
        symbols += "  key " + keyName(textKeys[key]) + " { type = \"TEXT\", [ ";
        for (std::size_t level = 0; level < levelModifiers.size(); ++level) {
            symbols += (level == 0 ? "" : ", ") + symbolName(slots_[level * keyCount + key]);
        }
        symbols += " ] };\n";
    }
    define(neutralKey);
    symbols += "  key " + keyName(neutralKey) + " { type = \"ONE_LEVEL\", [ VoidSymbol ] };\n";
    return "xkb_keymap {\nxkb_keycodes \"text\" {\n  minimum = 8;\n  maximum = 255;\n" + codes +
           "  indicator 1 = \"Caps Lock\";\n};\n" + std::string(typesAndCompatibility) +
           "xkb_symbols \"text\" {\n" + symbols + "};\n};\n";
}

}  // namespace tarvik::linuxdesktop
