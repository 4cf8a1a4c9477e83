// SPDX-License-Identifier: MIT

#include "platform/linux/x11/KeyboardMap.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/linux/x11/XkbProtocol.h"

namespace tarvik::linuxdesktop {

namespace {

// The first of the types that every keyboard map has: two levels, the second with Shift.
constexpr std::uint8_t twoLevelType = 1;

void append(std::vector<std::byte>& bytes, const void* data, std::size_t size) {
    const auto* first = static_cast<const std::byte*>(data);
    bytes.insert(bytes.end(), first, first + size);
}

template <typename Item>
Item take(const std::byte*& next) {
    Item item;
    std::memcpy(&item, next, sizeof item);
    next += sizeof item;
    return item;
}

// The keyboards of Xwayland may have maps with different types, and the server refuses a change of
// all of them that mentions a type which one of them lacks. So the map is that of the compositor's
// keyboard. The master keyboard follows the keyboard that was used last.
std::uint16_t keyboardOf(const XcbConnection& connection) {
    const std::uint16_t xwayland = connection.xwaylandKeyboard();
    return xwayland != 0 ? xwayland : std::uint16_t{XCB_XKB_ID_USE_CORE_KBD};
}

std::uint8_t takeShiftLevel(const std::byte*& next) {
    const auto head = take<xcb_xkb_key_type_t>(next);
    std::uint8_t level = 0;
    for (int i = 0; i < head.nMapEntries; ++i) {
        const auto entry = take<xcb_xkb_kt_map_entry_t>(next);
        if (entry.active != 0 && entry.mods_mask == XCB_MOD_MASK_SHIFT) {
            level = entry.level;
        }
    }
    next += head.hasPreserve != 0 ? head.nMapEntries * sizeof(xcb_xkb_mod_def_t) : 0;
    return level;
}

}  // namespace

bool KeyboardMap::Key::yieldsOnly(const SymbolPair& pair) const {
    const auto yields = [this](std::uint32_t symbol) {
        return std::ranges::find(symbols, symbol) != symbols.end();
    };
    return !isSpare() && std::ranges::all_of(pair, yields) &&
           std::ranges::all_of(symbols, [&](std::uint32_t each) {
               return each == 0 || std::ranges::find(pair, each) != pair.end();
           });
}

KeyboardMap::Key KeyboardMap::Key::yielding(const SymbolPair& symbols) {
    Key key;
    key.types[0] = twoLevelType;
    key.groupInfo = 1;
    key.width = static_cast<std::uint8_t>(symbols.size());
    key.symbols.assign(symbols.begin(), symbols.end());
    return key;
}

KeyboardMap KeyboardMap::read(XcbConnection& connection) {
    KeyboardMap map;
    const XcbReply<xcb_xkb_get_map_reply_t> reply(xcb_xkb_get_map_reply(
        connection.get(),
        xcb_xkb_get_map(connection.get(), keyboardOf(connection),
                        XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS, 0, 0, 0, 0, 0, 0, 0,
                        0, 0, 0, 0, 0, 0, 0, 0, 0),
        nullptr));
    if (!reply) {
        return map;
    }
    map.firstCode_ = reply->firstKeySym;
    map.keys_.resize(reply->nKeySyms);
    // The answer is the list of the types, then that of the symbols.
    const auto* next = static_cast<const std::byte*>(xcb_xkb_get_map_map(reply.get()));
    for (int type = 0; type < reply->nTypes; ++type) {
        map.shiftLevels_.push_back(takeShiftLevel(next));
    }
    for (Key& key : map.keys_) {
        const auto head = take<xcb_xkb_key_sym_map_t>(next);
        std::ranges::copy(head.kt_index, key.types.begin());
        key.groupInfo = head.groupInfo;
        key.width = head.width;
        key.symbols.resize(head.nSyms);
        if (head.nSyms != 0) {
            std::memcpy(key.symbols.data(), next, head.nSyms * sizeof(std::uint32_t));
            next += head.nSyms * sizeof(std::uint32_t);
        }
    }
    return map;
}

bool KeyboardMap::contains(xcb_keycode_t code) const {
    return code >= firstCode_ && static_cast<std::size_t>(code - firstCode_) < keys_.size();
}

const KeyboardMap::Key& KeyboardMap::operator[](xcb_keycode_t code) const {
    return keys_[static_cast<std::size_t>(code - firstCode_)];
}

void KeyboardMap::set(xcb_keycode_t code, Key key) {
    keys_[static_cast<std::size_t>(code - firstCode_)] = std::move(key);
}

std::uint32_t KeyboardMap::symbol(Keystroke stroke, std::uint8_t group) const {
    const Key& key = (*this)[stroke.key];
    const auto groups = static_cast<std::uint8_t>(key.groupInfo & 0x0F);
    if (groups == 0) {
        return 0;
    }
    if (group >= groups) {
        switch (key.groupInfo & 0xC0) {
            case XCB_XKB_GROUPS_WRAP_CLAMP_INTO_RANGE:
                group = static_cast<std::uint8_t>(groups - 1);
                break;
            case XCB_XKB_GROUPS_WRAP_REDIRECT_INTO_RANGE:
                group = static_cast<std::uint8_t>((key.groupInfo >> 4 & 0x03) % groups);
                break;
            default:
                group = static_cast<std::uint8_t>(group % groups);
        }
    }
    const std::uint8_t type = key.types[group];
    const std::size_t level =
        stroke.isShifted && type < shiftLevels_.size() ? shiftLevels_[type] : 0;
    const std::size_t position = group * std::size_t{key.width} + level;
    return position < key.symbols.size() ? key.symbols[position] : 0;
}

std::uint32_t KeyboardMap::write(XcbConnection& connection, xcb_keycode_t first,
                                 xcb_keycode_t last) const {
    std::vector<std::byte> list;
    std::uint16_t totalSymbols = 0;
    for (int code = first; code <= last; ++code) {
        const Key& key = (*this)[static_cast<xcb_keycode_t>(code)];
        xcb_xkb_key_sym_map_t head{};
        std::ranges::copy(key.types, head.kt_index);
        head.groupInfo = key.groupInfo;
        head.width = key.width;
        head.nSyms = static_cast<std::uint16_t>(key.symbols.size());
        append(list, &head, sizeof head);
        append(list, key.symbols.data(), key.symbols.size() * sizeof(std::uint32_t));
        totalSymbols = static_cast<std::uint16_t>(totalSymbols + head.nSyms);
    }
    // Xwayland 22 knows the widths of the types only in a request that mentions types, if none.
    const auto parts = static_cast<std::uint16_t>(
        XCB_XKB_MAP_PART_KEY_SYMS |
        (connection.xwaylandKeyboard() != 0 ? XCB_XKB_MAP_PART_KEY_TYPES : 0));
    const auto* setup = xcb_get_setup(connection.get());
    return xcb_xkb_set_map(connection.get(), keyboardOf(connection), parts, 0, setup->min_keycode,
                           setup->max_keycode, 0, 0, first,
                           static_cast<std::uint8_t>(last - first + 1), totalSymbols, 0, 0, 0, 0, 0,
                           0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, list.data())
        .sequence;
}

}  // namespace tarvik::linuxdesktop
