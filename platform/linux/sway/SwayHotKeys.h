// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/EventManager.h"
#include "platform/Log.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/loop/FileDescriptor.h"
#include "platform/linux/sway/SwayConnection.h"
#include "platform/linux/wayland/KeyRepeat.h"

namespace tarvik::linuxdesktop {

/// Key combinations as bindings of Sway that do nothing but are reported, and which of them is
/// held. Loop thread only.
///
/// Sway forgets to report the release when another key goes down during the hold. The repeats of
/// the held key end then too. So a hold also ends when its repeats end.
class SwayHotKeys {
  public:
    /// As in HotKeyListener, but on the loop's thread.
    struct Events {
        std::function<void(HotKeyNumber)> onPressed;
        std::function<void(HotKeyNumber)> onReleased;
        std::function<void(HotKeyNumber, const std::string& reason)> onLost;
    };
    /// Asks how the keyboard repeats that has pressed the hotkey.
    using AskRepeat = std::function<void(KeyRepeat::OnKnown)>;
    using OnStatus = std::function<void(platform::OSStatus)>;

    /// The references outlive the object.
    SwayHotKeys(SwayConnection& connection, EventLoop& loop, platform::Log& log, Events events,
                AskRepeat askRepeat);
    /// Ends a hold. Bindings that are left stay until somebody reloads Sway's configuration.
    ~SwayHotKeys();
    SwayHotKeys(const SwayHotKeys&) = delete;
    SwayHotKeys& operator=(const SwayHotKeys&) = delete;

    /// Binds the event manager's key and modifiers. `onStatus` gets a status of the event manager
    /// as HotKeyMeans::registerHotKey() answers it, in this or a later turn.
    void add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers,
             OnStatus onStatus);
    /// `onDone` is called when Sway has removed the binding.
    void remove(HotKeyNumber number, std::function<void()> onDone);
    /// As remove(), for every hotkey.
    void removeAll(std::function<void()> onDone);
    /// Binds hotkeys, with their modifiers, of a connection that was lost. One that cannot be bound
    /// is reported by `onLost`.
    void resume(const std::map<HotKeyNumber, std::uint32_t>& hotKeys);

    /// Handles an event about a binding.
    void handleBinding(std::string_view json);
    /// Sway has read its configuration again, and has forgotten all other bindings.
    void handleReload();

  private:
    struct HotKey {
        std::uint32_t modifiers = 0;
        // Sway has been asked to make the binding, and has not refused.
        bool isBound = false;
    };
    struct Hold {
        HotKeyNumber number = 0;
        SteadyTime pressTime;
        // How often the key has repeated.
        int repeats = 0;
        // Empty until the compositor has told.
        std::optional<KeyRepeat::Setting> repeat = {};
    };

    bool claim();
    // Gives the claim up where no hotkey is left.
    void releaseIfEmpty();
    void withOwner(std::uint32_t modifiers,
                   std::function<void(std::optional<std::string> command)> onKnown);
    void bind(HotKeyNumber number, std::function<void(bool isBound)> onBound);
    void restore(HotKeyNumber number);
    void handlePress(HotKeyNumber number);
    void handleRepeat(HotKeyNumber number, KeyRepeat::Setting setting);
    // Whether the held key repeats, as far as is known.
    bool repeats() const;
    // Whether a press that is reported during the hold is the held key's.
    bool isRepeat() const;
    void watchRepeats();
    void verifyEnd(int roundTripsLeft, int repeats);
    void endHold();

    SwayConnection& connection_;
    platform::Log& log_;
    Events events_;
    AskRepeat askRepeat_;
    std::map<HotKeyNumber, HotKey> hotKeys_;
    std::optional<Hold> hold_;
    Deadline repeatDeadline_;
    bool hasToldOfNoRepeat_ = false;
    // Held from the first hotkey to the end of the last one: another instance would take the
    // bindings over unnoticed.
    FileDescriptor lock_;
};

}  // namespace tarvik::linuxdesktop
