// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <bitset>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "platform/linux/x11/InputMethods.h"
#include "platform/linux/x11/KeyboardMap.h"
#include "platform/linux/x11/RemappedKeys.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The keys that are down, by key code.
using KeysDown = std::bitset<256>;

/// Which key yields which symbol, as far as hotkeys and typing need to know. A character that the
/// layout lacks gets a spare key, one without a symbol, for a while. Input thread only.
class Keyboard {
  public:
    explicit Keyboard(XcbConnection& connection)
        : connection_(connection), remappedKeys_(connection), inputMethods_(connection) {}

    /// The map has changed, and `sequence` is that of the last request processed by then. Answers
    /// whether another client has changed the map.
    bool handleMapChange(std::uint32_t sequence);
    /// Reads the map and the modifiers again if they may have changed. Finds out whether an input
    /// method runs.
    void refresh();
    /// Reads the map and the modifiers again in any case.
    void reread();

    /// The key that yields `symbol` without modifiers in the first layout; of several keys
    /// `preferred`.
    std::optional<xcb_keycode_t> keyOfSymbol(std::uint32_t symbol, xcb_keycode_t preferred) const;
    /// The modifier bits of the keys that yield one of `symbols`; 0 when there are none.
    std::uint8_t modifierMask(std::initializer_list<std::uint32_t> symbols) const;
    std::uint8_t numLockMask() const;
    /// Whether an input method runs.
    bool hasInputMethod() const { return hasInputMethod_; }
    /// A modifier with which keys type what they type without, and which makes an input method
    /// leave the keys alone. 0 while none runs, or when the modifier stands for something else.
    std::uint8_t bypassMask() const;
    /// The keys that are bound to one of the modifiers in `mask`.
    std::vector<xcb_keycode_t> modifierKeys(std::uint8_t mask) const;

    /// The event manager's modifiers that any of these keys stands for.
    std::uint32_t eventManagerMask(const std::vector<xcb_keycode_t>& keys) const;

    /// The key that types `character` while layout `group` is active, no modifier counts and the
    /// keys in `down` cannot be pressed.
    std::optional<xcb_keycode_t> keyFor(char32_t character, std::uint8_t group,
                                        const KeysDown& down) const;
    /// How many more characters can get a key.
    std::size_t freeKeys() const;
    /// Gives each of `characters` a key in one change of the map. Some characters get no key when
    /// there are more than freeKeys(), or when another client has taken keys since the last
    /// reading.
    void remapKeys(const std::set<char32_t>& characters);
    /// Lets the keys of all characters but `needed` be remapped again. The map stays until then.
    void allowReuse(const std::set<char32_t>& needed);
    /// Whether keys are remapped.
    bool hasRemappedKeys() const { return !remapped_.empty() || !reusable_.empty(); }
    /// Restores every remapped key, and the keys of killed instances.
    void restore();

  private:
    void readMap();
    void readModifiers();
    bool isRemapped(xcb_keycode_t code) const;
    void change(const std::map<xcb_keycode_t, KeyboardMap::Key>& keys);
    RemappedSymbols ownSymbols() const;

    XcbConnection& connection_;
    RemappedKeys remappedKeys_;
    InputMethods inputMethods_;
    KeyboardMap map_;
    std::vector<std::vector<xcb_keycode_t>> modifiers_;
    std::map<char32_t, xcb_keycode_t> remapped_;
    std::map<xcb_keycode_t, char32_t> reusable_;
    // The keys of other instances, which may restore them at any time.
    RemappedSymbols others_;
    std::set<std::uint32_t> ownChanges_;
    bool isStale_ = true;
    bool hasInputMethod_ = false;
};

/// The X symbol of a character.
std::uint32_t symbolOf(char32_t character);

}  // namespace tarvik::linuxdesktop
