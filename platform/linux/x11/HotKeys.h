// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/EventManager.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/x11/KeyGrab.h"
#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/LiftedModifiers.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The grabbed key combinations, and which of them is held. Input thread only.
///
/// A press is taken from the keyboard itself, before the server's master keyboard gets the key. So
/// no grab of another client counts, whether that is a grab of the combination or of the whole
/// keyboard. The keyboard is given back at once, and raw events tell the end of the hold.
class HotKeys {
  public:
    /// As in HotKeyListener, but on the input thread.
    struct Events {
        std::function<void(HotKeyNumber)> onPressed;
        std::function<void(HotKeyNumber)> onReleased;
        std::function<void(HotKeyNumber, const std::string& reason)> onLost;
    };

    /// The references outlive the object.
    HotKeys(XcbConnection& connection, Keyboard& keyboard, Events events);
    /// Ends a hold: nobody would ever hear of its release.
    ~HotKeys();
    HotKeys(const HotKeys&) = delete;
    HotKeys& operator=(const HotKeys&) = delete;

    /// Grabs a combination of the event manager's key and modifiers, with every state of the lock
    /// keys. Answers a status of the event manager; without noErr nothing is grabbed.
    platform::OSStatus add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers);
    void remove(HotKeyNumber number);

    void handlePress(const xcb_input_key_press_event_t& event);
    /// A key went up. `sequence` is that of the last request that the server had processed.
    void handleRelease(std::uint32_t keyCode, std::uint32_t sequence);
    /// The same for a key that came to this client by a grab.
    void handleGrabbedRelease(const xcb_input_key_release_event_t& event);
    /// The keyboard map has changed, and the keys may be others now.
    void handleMapChange();
    /// A keyboard is gone, and with it the releases of its keys.
    void handleKeyboardRemoved();
    /// Another means has heard a hotkey, of which the program in front has seen the modifiers.
    void accompanyModifiers();

    /// To be called before typing reads which keys are down. From here to endTyping() every release
    /// is heard, and no typed key counts as a hotkey.
    void beginTyping();
    void endTyping();
    /// Request `sequence` has lifted a modifier key that the user holds.
    void expectRelease(xcb_keycode_t key, std::uint32_t sequence);
    /// `onRelease` is called from here on when the user lets go of one of `keys`, of which typing
    /// uses none. No key and an empty function end that. For a hotkey that another means has heard.
    void observeReleases(const KeysDown& keys, std::function<void()> onRelease);
    const KeysDown& observedKeys() const { return observed_.keys; }
    /// The keyboard on which a hotkey was pressed last, as an XInput device; 0 when there is none.
    std::uint16_t keyboardInUse() const { return keyboardInUse_; }

  private:
    struct HotKey {
        std::uint32_t modifiers = 0;
        std::optional<KeyGrab> grab;
    };
    struct Hold {
        HotKeyNumber number = 0;
        xcb_keycode_t key = 0;
        std::vector<xcb_keycode_t> modifierKeys;
        // The XInput device.
        std::uint16_t keyboard = 0;
    };

    struct Observed {
        KeysDown keys;
        std::function<void()> onRelease;
        // Of the request right before the choice of events.
        std::uint32_t sequence = 0;
    };

    std::optional<HotKeyNumber> hotKeyOf(xcb_keycode_t key, std::uint32_t modifiers) const;
    bool isOfMaster(const xcb_input_key_press_event_t& event) const;
    void beginHold(HotKeyNumber number, const xcb_input_key_press_event_t& event);
    void endHold();
    void endIfReleased();
    void giveBack(const xcb_input_key_press_event_t& event);
    void hideModifiers(std::uint16_t keyboard);
    void passPressOn(const xcb_input_key_press_event_t& event);
    void passReleaseOn(const xcb_input_key_release_event_t& event);
    void followLifted();
    void selectRawEvents();

    XcbConnection& connection_;
    Keyboard& keyboard_;
    Events events_;
    std::map<HotKeyNumber, HotKey> hotKeys_;
    std::optional<Hold> hold_;
    Observed observed_;
    LiftedModifiers lifted_;
    bool isTyping_ = false;
    bool hearsReleases_ = false;
    std::uint16_t keyboardInUse_ = 0;
    std::set<std::pair<xcb_keycode_t, std::uint32_t>> ownReleases_;
};

}  // namespace tarvik::linuxdesktop
