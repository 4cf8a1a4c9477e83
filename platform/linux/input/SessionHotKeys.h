// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/EventManager.h"
#include "platform/linux/input/HotKeyMeans.h"

namespace tarvik::linuxdesktop {

/// The hotkeys of one InputSession. Loop thread only; no operation waits for another program,
/// unless the class that implements the operation says so.
class SessionHotKeys {
  public:
    /// As in HotKeyListener, but on the loop's thread. The callbacks do not destroy the object.
    struct Events {
        std::function<void(HotKeyNumber)> onPressed;
        std::function<void(HotKeyNumber)> onReleased;
        std::function<void(HotKeyNumber, const std::string& reason)> onLost;
        /// A combination that add() has refused may be free now.
        std::function<void()> onFreed;
    };
    /// `reason` may be empty.
    using OnStatus = std::function<void(platform::OSStatus, const std::string& reason)>;

    /// Ends a hold.
    virtual ~SessionHotKeys() = default;

    /// Registers the event manager's key and modifiers. `onStatus` gets a status of the event
    /// manager as HotKeyMeans::registerHotKey() answers it, in this or a later turn. After an error
    /// the hotkey is forgotten. Without an answer of the desktop `onStatus` is not called.
    virtual void add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers,
                     OnStatus onStatus) = 0;
    /// Gives a hotkey back; ends its hold without `onReleased`. `onDone` is called when the desktop
    /// has given the combination up, in this or a later turn.
    virtual void remove(HotKeyNumber number, std::function<void()> onDone) = 0;
    /// As remove(), for every hotkey. A hold ends with `onReleased`.
    virtual void removeAll(std::function<void()> onDone) = 0;
};

}  // namespace tarvik::linuxdesktop
