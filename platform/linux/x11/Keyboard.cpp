// SPDX-License-Identifier: MIT

#include "platform/linux/x11/Keyboard.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <iterator>
#include <span>

#include "platform/EventManager.h"
#include "platform/linux/x11/FakeKeyboard.h"
#include "platform/linux/x11/ServerGrab.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr std::size_t modifierCount = 8;
// The events of a change come right after the change.
constexpr std::size_t maxOwnChanges = 8;

// In KDE the session itself holds the key down while a hotkey is held.
constexpr xcb_keycode_t accompanyingKey = 248;

bool isAscii(char32_t character) {
    return character < 0x80;
}

// Some toolkits decode the older symbols of characters beyond Latin-1 as other characters. They
// agree on the symbols that contain the code point. The engines of IBus compose nothing from those.
// xterm knows such symbols of ASCII and beyond Latin-1, but not those in between.
std::uint32_t symbolOf(char32_t character, bool hidesAscii) {
    constexpr char32_t latin1End = 0x100;
    constexpr std::uint32_t codePointSymbols = 0x01000000;
    const bool isPlain = character < latin1End && !(hidesAscii && isAscii(character));
    return isPlain ? character : codePointSymbols | character;
}

// Of keys that act, of the keypad, or of modifiers.
bool isFunction(std::uint32_t symbol) {
    return symbol >= XKB_KEY_ISO_Lock && symbol <= XKB_KEY_Delete;
}

}  // namespace

KeysDown keysIn(std::span<const std::uint8_t> bits) {
    KeysDown down;
    for (std::size_t code = 0; code < std::min(down.size(), 8 * bits.size()); ++code) {
        down[code] = (bits[code / 8] >> (code % 8) & 1) != 0;
    }
    return down;
}

KeysDown keysDown(XcbConnection& connection, xcb_query_keymap_cookie_t request) {
    const XcbReply<xcb_query_keymap_reply_t> reply(
        xcb_query_keymap_reply(connection.get(), request, nullptr));
    return reply ? keysIn(reply->keys) : KeysDown();
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
    methods_ = inputMethods_.find();
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
    const auto isLost = [this](const auto& key) {
        return !map_.contains(key.first) || !map_[key.first].yieldsOnly(key.second);
    };
    RemappedSymbols own = ownSymbols();
    std::erase_if(own, isLost);
    std::erase_if(remapped_,
                  [&](const auto& each) { return !own.contains(each.second.stroke.key); });
    others_ = remappedKeys_.ofOthers();
    std::erase_if(others_, isLost);
    layout_ = {map_, [this](xcb_keycode_t code) { return isRemapped(code); }};
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
    return others_.contains(code) || std::ranges::any_of(remapped_, [&](const auto& each) {
               return each.second.stroke.key == code;
           });
}

std::optional<xcb_keycode_t> Keyboard::keyOfSymbol(std::uint32_t symbol,
                                                   xcb_keycode_t preferred) const {
    const auto yields = [&](xcb_keycode_t code) {
        return map_.contains(code) && map_.symbol({code}, 0) == symbol && !isRemapped(code);
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
        return map_.contains(code) && map_.symbol({code}, 0) == XKB_KEY_ISO_Level5_Shift;
    });
    for (std::size_t i = 0; isFree && i < map_.size(); ++i) {
        const auto code = static_cast<xcb_keycode_t>(map_.firstCode() + i);
        isFree = map_[code].width <= maxLevels || isFunction(map_.symbol({code}, 0));
    }
    return methods_.isAny && isFree ? XCB_MOD_MASK_3 : 0;
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

std::optional<xcb_keycode_t> Keyboard::silentKey() const {
    std::optional<xcb_keycode_t> first;
    for (std::size_t i = 0; i < map_.size(); ++i) {
        const auto code = static_cast<xcb_keycode_t>(map_.firstCode() + i);
        if (!map_[code].isSpare()) {
            continue;
        }
        if (first || !remapped_.empty()) {
            return first.value_or(code);
        }
        first = code;
    }
    return std::nullopt;
}

std::optional<Keystroke> Keyboard::strokeFor(char32_t character, std::uint8_t group,
                                             const KeysDown& down) const {
    const auto [first, last] = remapped_.equal_range(character);
    const auto remapped =
        std::find_if(first, last, [&](const auto& each) { return !down[each.second.stroke.key]; });
    if (remapped != last) {
        return remapped->second.stroke;
    }
    if (methods_.isIBus && isAscii(character)) {
        // Its engines compose from the layout's keys, whatever modifier comes with them.
        return std::nullopt;
    }
    const auto strokes = layout_.of(character, group);
    const auto found =
        std::ranges::find_if(strokes, [&](const Keystroke& stroke) { return !down[stroke.key]; });
    return found == strokes.end() ? std::nullopt : std::optional(*found);
}

// Spare keys without Shift come first. The server drops the press of a key that is down already: a
// pedal, or a modifier that the map lacks.
std::vector<Keystroke> Keyboard::unusedStrokes(const KeysDown& down) const {
    std::vector<Keystroke> strokes;
    const auto silent = silentKey();
    std::set<xcb_keycode_t> own;
    for (const auto& [character, remapped] : remapped_) {
        own.insert(remapped.stroke.key);
    }
    for (const bool isShifted : {false, true}) {
        for (std::size_t i = map_.size(); i > 0; --i) {
            const Keystroke stroke{static_cast<xcb_keycode_t>(map_.firstCode() + i - 1), isShifted};
            const bool isUsed = std::ranges::any_of(
                remapped_, [&](const auto& each) { return each.second.stroke == stroke; });
            const bool isSpare = map_[stroke.key].isSpare() && stroke.key != silent &&
                                 (stroke.key != accompanyingKey || !connection_.xwaylandKeyboard());
            if ((isSpare || own.contains(stroke.key)) && !isUsed && !down[stroke.key]) {
                strokes.push_back(stroke);
            }
        }
    }
    return strokes;
}

std::size_t Keyboard::freeStrokes(const std::set<char32_t>& kept, const KeysDown& down) const {
    const auto reusable = std::ranges::count_if(remapped_, [&](const auto& each) {
        return !kept.contains(each.first) && !down[each.second.stroke.key];
    });
    return unusedStrokes(down).size() + static_cast<std::size_t>(reusable);
}

std::optional<Keystroke> Keyboard::takeFromLeastUsed(const std::set<char32_t>& kept,
                                                     const KeysDown& down) {
    auto least = remapped_.end();
    for (auto each = remapped_.begin(); each != remapped_.end(); ++each) {
        if (!kept.contains(each->first) && !down[each->second.stroke.key] &&
            (least == remapped_.end() || each->second.use < least->second.use)) {
            least = each;
        }
    }
    if (least == remapped_.end()) {
        return std::nullopt;
    }
    const Keystroke stroke = least->second.stroke;
    remapped_.erase(least);
    return stroke;
}

// Nobody else may change the map between the reading and the writing.
void Keyboard::remapKeys(const std::set<char32_t>& characters, const std::set<char32_t>& kept,
                         const KeysDown& down) {
    ++uses_;
    for (auto& [character, remapped] : remapped_) {
        remapped.use = kept.contains(character) ? uses_ : remapped.use;
    }
    if (characters.empty()) {
        return;
    }
    const ServerGrab grab(connection_);
    readMap();
    const std::vector<Keystroke> unused = unusedStrokes(down);
    auto next = unused.begin();
    std::set<xcb_keycode_t> changed;
    std::map<char32_t, Remapped> remapped;
    for (const char32_t character : characters) {
        const auto stroke =
            next != unused.end() ? std::optional(*next++) : takeFromLeastUsed(kept, down);
        if (!stroke) {
            break;
        }
        remapped[character] = {*stroke, symbolOf(character, methods_.isIBus), uses_};
        changed.insert(stroke->key);
    }
    remapped_.merge(remapped);
    const RemappedSymbols symbols = ownSymbols();
    std::map<xcb_keycode_t, KeyboardMap::Key> keys;
    for (const xcb_keycode_t code : changed) {
        keys[code] = KeyboardMap::Key::yielding(symbols.at(code));
    }
    remappedKeys_.record(symbols);
    change(keys);
}

void Keyboard::restore() {
    const ServerGrab grab(connection_);
    readMap();
    RemappedSymbols symbols = remappedKeys_.toRestore();
    symbols.merge(ownSymbols());
    std::map<xcb_keycode_t, KeyboardMap::Key> keys;
    for (const auto& [code, pair] : symbols) {
        if (map_.contains(code) && map_[code].yieldsOnly(pair)) {
            keys[code] = {};
        }
    }
    remapped_.clear();
    change(keys);
    if (!symbols.empty()) {
        remappedKeys_.setRestored();
    }
}

// A key with one character yields that character with Shift too.
RemappedSymbols Keyboard::ownSymbols() const {
    RemappedSymbols symbols;
    for (const auto& [character, remapped] : remapped_) {
        SymbolPair& pair = symbols[remapped.stroke.key];
        pair[remapped.stroke.isShifted ? 1 : 0] = remapped.symbol;
        std::ranges::replace(pair, 0U, remapped.symbol);
    }
    return symbols;
}

// Every change is announced for the same range of keys: all that are spare or remapped. The X
// library forgets an announcement that comes while it reads the map for an earlier one. With the
// same range, what the library reads then contains the later change.
void Keyboard::change(const std::map<xcb_keycode_t, KeyboardMap::Key>& keys) {
    if (keys.empty()) {
        return;
    }
    xcb_keycode_t first = keys.begin()->first;
    xcb_keycode_t last = keys.rbegin()->first;
    for (std::size_t i = 0; i < map_.size(); ++i) {
        const auto code = static_cast<xcb_keycode_t>(map_.firstCode() + i);
        if (map_[code].isSpare() || isRemapped(code)) {
            first = std::min(first, code);
            last = std::max(last, code);
        }
    }
    for (const auto& [code, key] : keys) {
        map_.set(code, key);
    }
    if (const std::uint16_t keyboard = connection_.xwaylandKeyboard(); keyboard != 0) {
        // The release of a key that is up makes it the keyboard that was used last.
        FakeKeyboard(connection_, keyboard).release(first);
    }
    ownChanges_.insert(map_.write(connection_, first, last));
    if (ownChanges_.size() > maxOwnChanges) {
        ownChanges_.erase(ownChanges_.begin());
    }
}

}  // namespace tarvik::linuxdesktop
