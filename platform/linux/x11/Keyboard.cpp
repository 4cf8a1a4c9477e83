// SPDX-License-Identifier: MIT

#include "platform/linux/x11/Keyboard.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <iterator>
#include <span>

#include "platform/EventManager.h"
#include "platform/linux/x11/ServerGrab.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr std::size_t modifierCount = 8;
// The events of a change come right after the change.
constexpr std::size_t maxOwnChanges = 8;

// The keypad's symbols depend on Num Lock, and editing keys act instead of typing.
bool typesItself(std::uint32_t symbol) {
    const bool isFunctionKey = symbol >= XKB_KEY_BackSpace && symbol <= XKB_KEY_Delete;
    return symbol != XKB_KEY_NoSymbol && !isFunctionKey;
}

// Of keys that act, of the keypad, or of modifiers.
bool isFunction(std::uint32_t symbol) {
    return symbol >= XKB_KEY_ISO_Lock && symbol <= XKB_KEY_Delete;
}

}  // namespace

std::uint32_t symbolOf(char32_t character) {
    return xkb_utf32_to_keysym(character);
}

bool Keyboard::handleMapChange(std::uint32_t sequence) {
    if (ownChanges_.contains(sequence)) {
        return false;
    }
    isStale_ = true;
    return true;
}

void Keyboard::refresh() {
    if (isStale_) {
        reread();
    }
    hasInputMethod_ = inputMethods_.isRunning();
}

void Keyboard::reread() {
    isStale_ = false;
    readMap();
    readModifiers();
}

// Another program may have loaded a whole new map, and the remapped keys have no symbols any more.
// In a layout with several groups the server only stores the symbols in another form. A key that
// was forgotten for that would be lost for good.
void Keyboard::readMap() {
    map_ = KeyboardMap::read(connection_);
    const auto yields = [this](xcb_keycode_t code, std::uint32_t symbol) {
        return map_.contains(code) && map_[code].yieldsOnly(symbol);
    };
    std::erase_if(remapped_,
                  [&](const auto& key) { return !yields(key.second, symbolOf(key.first)); });
    std::erase_if(reusable_,
                  [&](const auto& old) { return !yields(old.first, symbolOf(old.second)); });
    others_ = remappedKeys_.ofOthers();
    std::erase_if(others_, [&](const auto& other) { return !yields(other.first, other.second); });
}

void Keyboard::readModifiers() {
    modifiers_.assign(modifierCount, {});
    const XcbReply<xcb_get_modifier_mapping_reply_t> reply(xcb_get_modifier_mapping_reply(
        connection_.get(), xcb_get_modifier_mapping(connection_.get()), nullptr));
    if (!reply) {
        return;
    }
    const std::size_t each = reply->keycodes_per_modifier;
    const std::span codes(xcb_get_modifier_mapping_keycodes(reply.get()), each * modifierCount);
    for (std::size_t modifier = 0; modifier < modifierCount; ++modifier) {
        std::ranges::copy_if(codes.subspan(modifier * each, each),
                             std::back_inserter(modifiers_[modifier]),
                             [](xcb_keycode_t code) { return code != 0; });
    }
}

bool Keyboard::isRemapped(xcb_keycode_t code) const {
    return reusable_.contains(code) || others_.contains(code) ||
           std::ranges::any_of(remapped_, [&](const auto& key) { return key.second == code; });
}

std::optional<xcb_keycode_t> Keyboard::keyOfSymbol(std::uint32_t symbol,
                                                   xcb_keycode_t preferred) const {
    const auto yields = [&](xcb_keycode_t code) {
        return map_.contains(code) && map_[code].symbol(0) == symbol && !isRemapped(code);
    };
    if (yields(preferred)) {
        return preferred;
    }
    for (std::size_t i = 0; i < map_.size(); ++i) {
        if (const auto code = static_cast<xcb_keycode_t>(map_.firstCode() + i); yields(code)) {
            return code;
        }
    }
    return std::nullopt;
}

std::uint8_t Keyboard::modifierMask(std::initializer_list<std::uint32_t> symbols) const {
    unsigned mask = 0;
    for (std::size_t modifier = 0; modifier < modifierCount; ++modifier) {
        const bool isBound = std::ranges::any_of(modifiers_[modifier], [&](xcb_keycode_t code) {
            return map_.contains(code) &&
                   std::ranges::any_of(map_[code].symbols, [&](std::uint32_t symbol) {
                       return std::ranges::find(symbols, symbol) != symbols.end();
                   });
        });
        mask |= isBound ? 1U << modifier : 0U;
    }
    return static_cast<std::uint8_t>(mask);
}

std::uint8_t Keyboard::numLockMask() const {
    return modifierMask({XKB_KEY_Num_Lock});
}

// The third modifier chooses the levels of a key beyond the fourth, in the few layouts that have
// them. Where it stands for a shortcut instead, programs type nothing.
std::uint8_t Keyboard::bypassMask() const {
    constexpr std::uint8_t maxLevels = 4;
    bool isFree = std::ranges::all_of(modifierKeys(XCB_MOD_MASK_3), [this](xcb_keycode_t code) {
        return map_.contains(code) && map_[code].symbol(0) == XKB_KEY_ISO_Level5_Shift;
    });
    for (std::size_t i = 0; isFree && i < map_.size(); ++i) {
        const auto& key = map_[static_cast<xcb_keycode_t>(map_.firstCode() + i)];
        isFree = key.width <= maxLevels || isFunction(key.symbol(0));
    }
    return hasInputMethod_ && isFree ? XCB_MOD_MASK_3 : 0;
}

std::vector<xcb_keycode_t> Keyboard::modifierKeys(std::uint8_t mask) const {
    std::vector<xcb_keycode_t> keys;
    for (std::size_t modifier = 0; modifier < modifierCount; ++modifier) {
        if ((mask >> modifier & 1) != 0) {
            keys.insert(keys.end(), modifiers_[modifier].begin(), modifiers_[modifier].end());
        }
    }
    return keys;
}

std::uint32_t Keyboard::eventManagerMask(const std::vector<xcb_keycode_t>& keys) const {
    const auto holdsAny = [&](std::uint8_t modifiers) {
        const auto bound = modifierKeys(modifiers);
        return std::ranges::find_first_of(keys, bound) != keys.end();
    };
    std::uint32_t mask = 0;
    mask |= holdsAny(modifierMask({XKB_KEY_Alt_L, XKB_KEY_Alt_R})) ? platform::optionKeyMask : 0U;
    mask |= holdsAny(XCB_MOD_MASK_SHIFT) ? platform::shiftKeyMask : 0U;
    return mask;
}

std::optional<xcb_keycode_t> Keyboard::keyFor(char32_t character, std::uint8_t group,
                                              const KeysDown& down) const {
    if (const auto found = remapped_.find(character); found != remapped_.end()) {
        return found->second;
    }
    const std::uint32_t symbol = symbolOf(character);
    if (!typesItself(symbol)) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < map_.size(); ++i) {
        const auto code = static_cast<xcb_keycode_t>(map_.firstCode() + i);
        if (!down[code] && map_[code].symbol(group) == symbol && !isRemapped(code)) {
            return code;
        }
    }
    return std::nullopt;
}

std::size_t Keyboard::freeKeys() const {
    std::size_t count = reusable_.size();
    for (std::size_t i = 0; i < map_.size(); ++i) {
        count += map_[static_cast<xcb_keycode_t>(map_.firstCode() + i)].isSpare() ? 1U : 0U;
    }
    return count;
}

// Nobody else may change the map between the reading and the writing.
void Keyboard::remapKeys(const std::set<char32_t>& characters) {
    const ServerGrab grab(connection_);
    readMap();
    std::map<xcb_keycode_t, KeyboardMap::Key> keys;
    auto next = characters.begin();
    const auto remap = [&](xcb_keycode_t code) {
        keys[code] = KeyboardMap::Key::yielding(symbolOf(*next));
        remapped_[*next] = code;
        reusable_.erase(code);
        ++next;
    };
    for (std::size_t i = map_.size(); i > 0 && next != characters.end(); --i) {
        const auto code = static_cast<xcb_keycode_t>(map_.firstCode() + i - 1);
        if (map_[code].isSpare()) {
            remap(code);
        }
    }
    while (next != characters.end() && !reusable_.empty()) {
        remap(reusable_.begin()->first);
    }
    remappedKeys_.record(ownSymbols());
    change(keys);
}

void Keyboard::allowReuse(const std::set<char32_t>& needed) {
    for (auto key = remapped_.begin(); key != remapped_.end();) {
        if (needed.contains(key->first)) {
            ++key;
        } else {
            reusable_[key->second] = key->first;
            key = remapped_.erase(key);
        }
    }
}

void Keyboard::restore() {
    const ServerGrab grab(connection_);
    readMap();
    RemappedSymbols symbols = remappedKeys_.toRestore();
    symbols.merge(ownSymbols());
    std::map<xcb_keycode_t, KeyboardMap::Key> keys;
    for (const auto& [code, symbol] : symbols) {
        if (map_.contains(code) && map_[code].yieldsOnly(symbol)) {
            keys[code] = {};
        }
    }
    remapped_.clear();
    reusable_.clear();
    change(keys);
    if (!symbols.empty()) {
        remappedKeys_.setRestored();
    }
}

RemappedSymbols Keyboard::ownSymbols() const {
    RemappedSymbols symbols;
    for (const auto& [character, code] : remapped_) {
        symbols[code] = symbolOf(character);
    }
    for (const auto& [code, character] : reusable_) {
        symbols[code] = symbolOf(character);
    }
    return symbols;
}

// The keys in between are written back as they are. Each change makes every client read the map,
// and many changes can freeze a window manager.
void Keyboard::change(const std::map<xcb_keycode_t, KeyboardMap::Key>& keys) {
    if (keys.empty()) {
        return;
    }
    for (const auto& [code, key] : keys) {
        map_.set(code, key);
    }
    ownChanges_.insert(map_.write(connection_, keys.begin()->first, keys.rbegin()->first));
    if (ownChanges_.size() > maxOwnChanges) {
        ownChanges_.erase(ownChanges_.begin());
    }
}

}  // namespace tarvik::linuxdesktop
