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
#include <utility>
#include <vector>

#include "platform/EventManager.h"
#include "platform/Log.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/KeyGrab.h"
#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/LiftedModifiers.h"
#include "platform/linux/x11/ManagerEcho.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Tells one registration of a hotkey from every other; never 0.
using HotKeyNumber = std::uintptr_t;

/// The grabbed key combinations, and which of them is held. Input thread only.
///
/// The keyboard is ours from the press to the release of the key, unless typing takes it away in
/// between; then the server's raw events tell the end of the hold.
class HotKeys {
  public:
    /// `kind` is eventHotKeyPressed, once for the press whatever the keyboard repeats, or
    /// eventHotKeyReleased, once at the end.
    using Listener = std::function<void(HotKeyNumber number, std::uint32_t kind)>;

    HotKeys(XcbConnection& connection, Keyboard& keyboard, PollLoop& loop, platform::Log& log,
            Listener listener);
    /// Ends a hold: nobody would ever hear of its release.
    ~HotKeys();
    HotKeys(const HotKeys&) = delete;
    HotKeys& operator=(const HotKeys&) = delete;

    /// Grabs a combination of the event manager's key and modifiers, with every state of the lock
    /// keys. A status of the event manager; nothing is grabbed unless it is noErr.
    platform::OSStatus add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers);
    void remove(HotKeyNumber number);

    void handlePress(const xcb_input_key_press_event_t& event);
    /// A key went up; `sequence` is that of the last request that the server had carried out.
    void handleRelease(std::uint32_t keyCode, std::uint32_t sequence);
    /// The keyboard map or the window manager has changed: the keys may be others, and window
    /// managers that grab theirs after us would be served first.
    void noticeLaterGrabs();
    /// Hears of a changed property, which may tell that the window manager has grabbed its keys.
    void noticeProperty(const xcb_property_notify_event_t& event);
    /// A keyboard is gone, and with it the releases of its keys.
    void noticeLostKeyboard();

    /// Before typing looks which keys are down: from here on every release is heard of, and until
    /// endTyping() no typed key counts as a hotkey.
    void beginTyping();
    void endTyping();
    /// Typing has taken the keyboard: the end of a hold will come as a raw event.
    void loseKeyboard();
    /// Request `sequence` has lifted a modifier that the user holds.
    void noticeLift(xcb_keycode_t key, std::uint32_t sequence);
    /// Ends a hold whose key is up.
    void endIfReleased();
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
        bool hasLostKeyboard = false;
    };

    std::optional<KeyGrab> grabFor(std::uint32_t modifiers) const;
    void awaitRenewal(std::chrono::milliseconds passed);
    void renew();
    void endHold();
    void followLifted();
    void selectRawReleases();

    XcbConnection& connection_;
    Keyboard& keyboard_;
    platform::Log& log_;
    Listener listener_;
    std::map<HotKeyNumber, HotKey> hotKeys_;
    std::optional<Hold> hold_;
    LiftedModifiers lifted_;
    bool isTyping_ = false;
    bool hearsRawReleases_ = false;
    std::uint16_t keyboardInUse_ = 0;
    std::set<std::pair<xcb_keycode_t, std::uint32_t>> ownReleases_;
    ManagerEcho managerEcho_;
    Deadline renewal_;
    std::size_t renewalsDone_ = 0;
};

}  // namespace tarvik::linuxdesktop
