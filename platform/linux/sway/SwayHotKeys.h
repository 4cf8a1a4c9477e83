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
#include "platform/linux/input/SessionHotKeys.h"
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
class SwayHotKeys final : public SessionHotKeys {
  public:
    /// Asks how the keyboard repeats that has pressed the hotkey.
    using AskRepeat = std::function<void(KeyRepeat::OnKnown)>;

    /// The references outlive the object.
    SwayHotKeys(SwayConnection& connection, EventLoop& loop, platform::Log& log, Events events,
                AskRepeat askRepeat);
    /// Ends a hold. Bindings that are left stay until somebody reloads Sway's configuration.
    ~SwayHotKeys() override;
    SwayHotKeys(const SwayHotKeys&) = delete;
    SwayHotKeys& operator=(const SwayHotKeys&) = delete;

    void add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers,
             OnStatus onStatus) override;
    void remove(HotKeyNumber number, std::function<void()> onDone) override;
    void removeAll(std::function<void()> onDone) override;

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
