// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <chrono>
#include <cstddef>
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
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/GrabWatch.h"
#include "platform/linux/x11/HoldGrab.h"
#include "platform/linux/x11/KeyGrab.h"
#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/LiftedModifiers.h"
#include "platform/linux/x11/RawKeys.h"
#include "platform/linux/x11/SequenceRanges.h"
#include "platform/linux/x11/WindowManagerFence.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The grabbed key combinations, and which of them is held. Input thread only.
///
/// The grab lasts from the press until all keys are up, unless typing ends it in between. Then the
/// server's raw events tell the end of the hold. Raw events also tell of a press that goes to
/// another client: to one that has grabbed the whole keyboard, or the combination later.
class HotKeys {
  public:
    /// As in HotKeyListener, but on the input thread.
    struct Events {
        std::function<void(HotKeyNumber)> onPressed;
        std::function<void(HotKeyNumber)> onReleased;
        std::function<void(HotKeyNumber, const std::string& reason)> onLost;
    };

    /// The references outlive the object.
    HotKeys(XcbConnection& connection, Keyboard& keyboard, PollLoop& loop, Events events);
    /// Ends a hold: nobody would ever hear of its release.
    ~HotKeys();
    HotKeys(const HotKeys&) = delete;
    HotKeys& operator=(const HotKeys&) = delete;

    /// Grabs a combination of the event manager's key and modifiers, with every state of the lock
    /// keys. Answers a status of the event manager; without noErr nothing is grabbed.
    platform::OSStatus add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers);
    void remove(HotKeyNumber number);

    void handlePress(const xcb_input_key_press_event_t& event);
    void handleRawPress(const xcb_input_raw_key_press_event_t& event);
    /// A key went up. `sequence` is that of the last request that the server had processed.
    void handleRelease(std::uint32_t keyCode, std::uint32_t sequence);
    /// The same for a key that came to this client by a grab.
    void handleGrabbedRelease(const xcb_input_key_release_event_t& event);
    /// The keyboard map or the window manager has changed. The keys may be others now, and a window
    /// manager that grabs its keys after this client would be served first.
    void renewGrabs();
    /// The keyboard goes elsewhere than to the front window, or there again, because of a grab.
    /// Whose grab, the server does not tell. `sequence` as for handleRelease().
    void handleGrab(GrabWatch::Change change, std::uint32_t sequence);
    /// Another client is known to have grabbed the keyboard.
    void handleGrabByOther();
    /// Another window is in front.
    void followFront(xcb_window_t front);
    /// A property has changed: perhaps the answer that the window manager has grabbed its keys.
    void handleProperty(const xcb_property_notify_event_t& event);
    /// A keyboard is gone, and with it the releases of its keys.
    void handleKeyboardRemoved();

    /// To be called before typing reads which keys are down. From here to endTyping() every release
    /// is heard, and no typed key counts as a hotkey.
    void beginTyping();
    void endTyping();
    /// Typing has ended the grab: the end of a hold will come as a raw event.
    void handleGrabLost();
    /// Request `sequence` has lifted a modifier key that the user holds.
    void expectRelease(xcb_keycode_t key, std::uint32_t sequence);
    /// Ends a hold whose key is up.
    void endIfReleased();
    /// The keyboard on which a hotkey was pressed last, as an XInput device; 0 when there is none.
    std::uint16_t keyboardInUse() const { return keyboardInUse_; }

  private:
    struct HotKey {
        std::uint32_t modifiers = 0;
        std::optional<KeyGrab> grab;
    };
    // What tells the grabbed press that belongs to a press that was heard otherwise.
    struct Unconfirmed {
        std::optional<xcb_timestamp_t> time;
        std::uint32_t readSequence = 0;
    };
    struct Hold {
        HotKeyNumber number = 0;
        xcb_keycode_t key = 0;
        std::vector<xcb_keycode_t> modifierKeys;
        bool hasLostGrab = false;
        // When the key went down, if only a raw event or the state of the keys has told so far.
        std::optional<Unconfirmed> unconfirmed = {};
    };

    std::optional<HotKeyNumber> hotKeyOf(xcb_keycode_t key, std::uint32_t modifiers) const;
    void beginHold(HotKeyNumber number, std::optional<Unconfirmed> unconfirmed);
    void keepKeyboard(const Hold& hold);
    bool confirm(const xcb_input_key_press_event_t& event);
    void hearUngrabbedPresses();
    void beginRenewals();
    void scheduleRenewal(std::chrono::milliseconds passed);
    void renew();
    void endHold();
    void followLifted();
    bool selectRawEvents();

    XcbConnection& connection_;
    Keyboard& keyboard_;
    Events events_;
    std::map<HotKeyNumber, HotKey> hotKeys_;
    std::optional<Hold> hold_;
    LiftedModifiers lifted_;
    RawKeys rawKeys_;
    GrabWatch grabWatch_;
    HoldGrab holdGrab_;
    bool isTyping_ = false;
    // As far as is known, and not by a grab of this client.
    bool isGrabbed_ = false;
    // The key of the hold that was reported last, until the key goes up.
    xcb_keycode_t reportedKey_ = 0;
    std::uint16_t keyboardInUse_ = 0;
    std::set<std::pair<xcb_keycode_t, std::uint32_t>> ownReleases_;
    // The bursts of typed keys, and the grabs that are not another client's.
    SequenceRanges ownRequests_;
    WindowManagerFence windowManagerFence_;
    Deadline renewal_;
    std::size_t renewalsDone_ = 0;
    bool isRenewing_ = false;
};

}  // namespace tarvik::linuxdesktop
