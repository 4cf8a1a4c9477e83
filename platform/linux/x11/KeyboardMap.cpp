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

}  // namespace

std::uint32_t KeyboardMap::Key::symbol(std::uint8_t group) const {
    const auto groups = static_cast<std::uint8_t>(groupInfo & 0x0F);
    if (groups == 0) {
        return 0;
    }
    if (group >= groups) {
        switch (groupInfo & 0xC0) {
            case XCB_XKB_GROUPS_WRAP_CLAMP_INTO_RANGE:
                group = static_cast<std::uint8_t>(groups - 1);
                break;
            case XCB_XKB_GROUPS_WRAP_REDIRECT_INTO_RANGE:
                group = static_cast<std::uint8_t>((groupInfo >> 4 & 0x03) % groups);
                break;
            default:
                group = static_cast<std::uint8_t>(group % groups);
        }
    }
    const auto position = static_cast<std::size_t>(group) * width;
    return position < symbols.size() ? symbols[position] : 0;
}

bool KeyboardMap::Key::yieldsOnly(std::uint32_t symbol) const {
    return !isSpare() && std::ranges::find(symbols, symbol) != symbols.end() &&
           std::ranges::all_of(symbols,
                               [&](std::uint32_t each) { return each == symbol || each == 0; });
}

KeyboardMap::Key KeyboardMap::Key::yielding(std::uint32_t symbol) {
    Key key;
    key.types[0] = twoLevelType;
    key.groupInfo = 1;
    key.width = 2;
    key.symbols = {symbol, symbol};
    return key;
}

KeyboardMap KeyboardMap::read(XcbConnection& connection) {
    KeyboardMap map;
    const XcbReply<xcb_xkb_get_map_reply_t> reply(xcb_xkb_get_map_reply(
        connection.get(),
        xcb_xkb_get_map(connection.get(), XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_MAP_PART_KEY_SYMS, 0, 0,
                        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0),
        nullptr));
    if (!reply) {
        return map;
    }
    map.firstCode_ = reply->firstKeySym;
    map.keys_.resize(reply->nKeySyms);
    // Only the symbols were asked for, so the answer is their list.
    const auto* next = static_cast<const std::byte*>(xcb_xkb_get_map_map(reply.get()));
    for (Key& key : map.keys_) {
        xcb_xkb_key_sym_map_t head;
        std::memcpy(&head, next, sizeof head);
        next += sizeof head;
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
    const auto* setup = xcb_get_setup(connection.get());
    return xcb_xkb_set_map(connection.get(), XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_MAP_PART_KEY_SYMS, 0,
                           setup->min_keycode, setup->max_keycode, 0, 0, first,
                           static_cast<std::uint8_t>(last - first + 1), totalSymbols, 0, 0, 0, 0, 0,
                           0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, list.data())
        .sequence;
}

}  // namespace tarvik::linuxdesktop
