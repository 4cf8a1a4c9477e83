// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "platform/EventManager.h"

namespace tarvik::linuxdesktop {

/// Tells one registration of a hotkey from every other; never 0.
using HotKeyNumber = std::uintptr_t;

/// Hears what happens to registered hotkeys. On the main thread, never inside a call to the means.
class HotKeyListener {
  public:
    virtual ~HotKeyListener() = default;

    /// The combination went down. Called once a press, whatever the keyboard repeats.
    virtual void onPressed(HotKeyNumber number) = 0;
    /// One of the combination's keys went up. Called once after each onPressed().
    virtual void onReleased(HotKeyNumber number) = 0;
    /// The combination cannot be heard, though its registration was answered with noErr: the
    /// desktop's owner refused it in a dialog, or another program has taken it. The registration
    /// stays, and the means tries to get the combination back.
    virtual void onLost(HotKeyNumber number, const std::string& reason) = 0;
    /// The combination is heard from now on, after its registration was refused or onLost().
    virtual void onRegistered(HotKeyNumber number) = 0;
};

/// One way to hear hotkeys in a desktop session. Main thread only, unless a line says otherwise.
///
/// No answer to a registration is final but eventHotKeyInvalidErr. Some desktops ask their user, so
/// a refusal may come after noErr, by HotKeyListener::onLost(). A combination that is refused stays
/// wanted until unregisterHotKey(). The means asks for the combination again when the desktop is
/// there again, and when the means knows that its owner has given it up. Success is reported by
/// HotKeyListener::onRegistered().
class HotKeyMeans {
  public:
    /// Takes the hotkeys back. No listener is called any more.
    virtual ~HotKeyMeans() = default;

    /// Asks for a combination of the event manager's key code and modifier mask.
    ///
    /// noErr: the combination is registered, or the desktop is asking its user, or is too busy to
    /// decide yet.
    /// eventHotKeyExistsErr: somebody else has it. eventHotKeyInvalidErr: this desktop cannot have
    /// such a hotkey, and the means forgets it. eventInternalErr: the desktop does not answer.
    /// Waits 1 s at the most.
    virtual platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                              std::uint32_t modifiers) = 0;
    /// Gives a combination back, so that other programs can have it afterwards, or wants it no
    /// more; ends a hold without onReleased(). Waits 1 s at the most.
    virtual void unregisterHotKey(HotKeyNumber number) = 0;

    /// Typing is about to lift these modifiers, a mask of the event manager, which the user holds.
    /// Their release is not the user's and does not end a hold. Any thread; never blocks.
    virtual void expectLift(std::uint32_t modifiers) = 0;

    /// Whether another part of the desktop has a combination that was refused, and takeOver() would
    /// get the combination. Any thread.
    virtual bool canTakeOver() const { return false; }
    /// The user asks for such combinations. The means takes them from their owner, registers the
    /// hotkeys that were refused, and gives the combinations back when the application ends. The
    /// next start takes them again. Does not wait.
    virtual void takeOver() {}
};

}  // namespace tarvik::linuxdesktop
