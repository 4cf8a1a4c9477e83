// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/Workspace.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/x11/FakeKeyboard.h"
#include "platform/linux/x11/FrontWindow.h"
#include "platform/linux/x11/HotKeys.h"
#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The state of the keyboard that decides what a key types.
struct KeyboardState {
    std::uint8_t group = 0;
    std::uint8_t lockedModifiers = 0;
    std::uint8_t latchedModifiers = 0;
    /// For the programs.
    KeysDown down;
    /// The keys that are down for the programs or on the keyboard that presses the keys, and those
    /// of a hotkey that is held.
    KeysDown unusable;
};

/// Presses the keys of characters under one grab of the server, during which nobody else can move
/// the focus. Input thread only.
class KeyBurst {
  public:
    enum class Outcome {
        done,
        notInFront,
        /// Another program has grabbed the keyboard or taken the focus, or a modifier stays down.
        keyboardTaken,
        keysChanged
    };
    struct Result {
        Outcome outcome = Outcome::done;
        /// How many characters have gone into the window. A program that takes the focus may do so
        /// in the middle of a burst.
        std::size_t typed = 0;
    };

    /// The references outlive the object. `onLift` may be empty.
    KeyBurst(XcbConnection& connection, Keyboard& keyboard, FrontWindow& front, HotKeys& hotKeys,
             OnLift onLift);

    /// The state that the next burst would begin with.
    KeyboardState readState();

    /// Types all of `characters` into `window` of `process`, into any window of that process where
    /// `window` is XCB_NONE, or without a process into whatever has the keyboard. Where another
    /// window is in front, `behind` gets the focus for the length of the burst. Types nothing when
    /// that is not possible, when a program has grabbed the keyboard, or when a character has no
    /// key any more.
    Result type(std::u32string_view characters, std::optional<platform::ProcessIdentifier> process,
                xcb_window_t window, xcb_window_t behind);

  private:
    Result typeUndisturbed(std::u32string_view characters,
                           std::optional<platform::ProcessIdentifier> process, xcb_window_t window,
                           xcb_window_t behind);
    std::vector<xcb_keycode_t> heldModifiers(const KeysDown& down) const;
    bool liftModifiers(std::vector<xcb_keycode_t> held);
    bool takeKeyboard();
    void giveKeyboardsBack();
    void chooseKeyboard();
    std::size_t press(std::span<const Keystroke> strokes, const KeyboardState& state,
                      xcb_window_t verified, xcb_window_t behind);

    XcbConnection& connection_;
    Keyboard& keyboard_;
    FrontWindow& front_;
    HotKeys& hotKeys_;
    OnLift onLift_;
    FakeKeyboard fake_;
};

}  // namespace tarvik::linuxdesktop
