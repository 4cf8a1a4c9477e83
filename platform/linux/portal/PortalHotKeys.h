// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/EventManager.h"
#include "platform/Log.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/input/RepeatedHold.h"
#include "platform/linux/input/SessionHotKeys.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/portal/ShortcutsPortal.h"

namespace tarvik::linuxdesktop {

/// Key combinations as global shortcuts of the desktop's portal, and which of them is held. Loop
/// thread only.
///
/// The portal shows one dialog for all shortcuts of a request. So one request follows 0.1 s after
/// the last change, unless the portal has the same shortcuts already.
///
/// A hold ends with the signal Deactivated. Some portals do not send the signal at times, but tell
/// of the repeats of the key. Then the hold ends when the repeats end, or by the next press.
class PortalHotKeys final : public SessionHotKeys {
  public:
    /// The references outlive the object and its callbacks.
    PortalHotKeys(MessageBus& bus, EventLoop& loop, platform::Log& log, Events events);
    ~PortalHotKeys() override;
    PortalHotKeys(const PortalHotKeys&) = delete;
    PortalHotKeys& operator=(const PortalHotKeys&) = delete;

    /// The status comes in this turn. What the portal and its user decide is a later onLost().
    void add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers,
             OnStatus onStatus) override;
    /// `onDone` is called in this turn. The portal hears of it with the next request.
    void remove(HotKeyNumber number, std::function<void()> onDone) override;
    /// `onDone` is called also when the portal does not answer.
    void removeAll(std::function<void()> onDone) override;

  private:
    // A combination of the space bar.
    struct Combination {
        // Names the shortcut in the portal.
        const char* name;
        const char* text;
        const char* trigger;
        std::uint32_t modifiers;
    };

    platform::OSStatus want(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers);
    static const Combination* combinationOf(std::uint32_t modifiers);
    std::optional<HotKeyNumber> numberOf(const std::string& name) const;
    ShortcutsPortal::Names wantedNames() const;
    void bindLater();
    void bind();
    void handleActivated(const std::string& name);
    void watchRepeats(SteadyTime now);
    void handleDeactivated(const std::string& name);
    void handleBound(const ShortcutsPortal::Names& names, const std::string& reason);
    void handleEnded(const std::string& reason);
    void reportMissing();
    void endHoldWithoutSignal();
    void endHold();

    platform::Log& log_;
    const Events events_;
    ShortcutsPortal portal_;
    std::map<HotKeyNumber, const Combination*> hotKeys_;
    // What the portal was asked for last; empty after an end.
    ShortcutsPortal::Names boundNames_;
    // Why the portal has not bound a shortcut, by the shortcut's name.
    std::map<std::string, std::string> missing_;
    Deadline bindDeadline_;
    int retriesLeft_;
    std::chrono::milliseconds retryInterval_;
    RepeatedHold hold_;
    Deadline repeatDeadline_;
    bool hasLoggedMissingSignal_ = false;
};

}  // namespace tarvik::linuxdesktop
