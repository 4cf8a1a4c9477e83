// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <bitset>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <vector>

#include "platform/linux/x11/InputMethods.h"
#include "platform/linux/x11/KeyboardMap.h"
#include "platform/linux/x11/LayoutStrokes.h"
#include "platform/linux/x11/RemappedKeys.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The keys that are down, by key code.
using KeysDown = std::bitset<256>;

/// The keys whose bits are set, in the form of the X protocol.
KeysDown keysIn(std::span<const std::uint8_t> bits);

/// The answer to a request for the keys that are down; none when the server is gone. Waits for the
/// server.
KeysDown keysDown(XcbConnection& connection, xcb_query_keymap_cookie_t request);

/// Which key yields which symbol, as far as hotkeys and typing need to know. A character that the
/// layouts lack gets a spare key, one without a symbol, for a while. While IBus runs, every
/// character of ASCII does. A spare key serves two characters, one of them with Shift. Input thread
/// only.
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
    bool hasInputMethod() const { return methods_.isAny; }
    /// Which input methods ran at the last refresh().
    const InputMethods::Running& inputMethods() const { return methods_; }
    /// A modifier with which keys type what they type without, and which makes an input method
    /// leave the keys alone. 0 while none runs, or when the modifier stands for something else.
    std::uint8_t bypassMask() const;
    /// The keys that are bound to one of the modifiers in `mask`.
    std::vector<xcb_keycode_t> modifierKeys(std::uint8_t mask) const;

    /// The event manager's modifiers that any of these keys stands for.
    std::uint32_t eventManagerMask(const std::vector<xcb_keycode_t>& keys) const;

    /// A key that yields nothing, and is never remapped. Empty when the keyboard has no spare key,
    /// or just one, which serves text.
    std::optional<xcb_keycode_t> silentKey() const;

    /// The keystroke that types `character` while layout `group` is active, no modifier counts but
    /// Shift, and the keys in `down` cannot be pressed.
    std::optional<Keystroke> strokeFor(char32_t character, std::uint8_t group,
                                       const KeysDown& down) const;
    /// How many more characters can get a keystroke while those in `kept` keep theirs and the keys
    /// in `down` cannot be pressed.
    std::size_t freeStrokes(const std::set<char32_t>& kept, const KeysDown& down = {}) const;
    /// Gives each of `characters` a keystroke in one change of the map, with none of the keys in
    /// `down`. Those in `kept` keep theirs; of the others the one that was kept the longest ago
    /// loses its own first. Some characters get none when there are more than freeStrokes(), or
    /// when another client has taken keys since the last reading.
    void remapKeys(const std::set<char32_t>& characters, const std::set<char32_t>& kept,
                   const KeysDown& down = {});
    /// Whether keys are remapped.
    bool hasRemappedKeys() const { return !remapped_.empty(); }
    /// Restores every remapped key, and the keys of killed instances.
    void restore();

  private:
    struct Remapped {
        Keystroke stroke;
        std::uint32_t symbol = 0;
        // Of the last call of remapKeys() that kept the character.
        std::uint64_t use = 0;
    };

    void readMap();
    void readModifiers();
    bool isRemapped(xcb_keycode_t code) const;
    std::vector<Keystroke> unusedStrokes(const KeysDown& down) const;
    std::optional<Keystroke> takeFromLeastUsed(const std::set<char32_t>& kept,
                                               const KeysDown& down);
    void change(const std::map<xcb_keycode_t, KeyboardMap::Key>& keys);
    RemappedSymbols ownSymbols() const;

    XcbConnection& connection_;
    RemappedKeys remappedKeys_;
    InputMethods inputMethods_;
    KeyboardMap map_;
    LayoutStrokes layout_;
    std::vector<std::vector<xcb_keycode_t>> modifiers_;
    // A character whose key was held down has a further one.
    std::multimap<char32_t, Remapped> remapped_;
    std::uint64_t uses_ = 0;
    // The keys of other instances, which may restore them at any time.
    RemappedSymbols others_;
    std::set<std::uint32_t> ownChanges_;
    bool isStale_ = true;
    InputMethods::Running methods_;
};

}  // namespace tarvik::linuxdesktop
