// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/EventManager.h"
#include "platform/Log.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/kwin/ForeignShortcuts.h"
#include "platform/linux/kwin/GlobalAccel.h"

namespace tarvik::linuxdesktop {

/// Key combinations as global shortcuts of KDE, and which of them is held. Loop thread only.
///
/// KDE keeps the shortcuts of a program that was killed. The next start has the same names for
/// them, and so takes them over.
class GlobalAccelHotKeys {
  public:
    /// As in HotKeyListener, but on the loop's thread.
    struct Events {
        std::function<void(HotKeyNumber)> onPressed;
        std::function<void(HotKeyNumber)> onReleased;
        std::function<void(HotKeyNumber, const std::string& reason)> onLost;
        /// Whether takeOver() would get a combination that was refused.
        std::function<void(bool canTakeOver)> onTaken = [](bool) {};
        /// A hold begins or ends, also by remove(). Before the events above.
        std::function<void(bool isHeld)> onHold = [](bool) {};
    };
    using OnStatus = std::function<void(platform::OSStatus)>;

    /// The references outlive the object and its callbacks.
    GlobalAccelHotKeys(MessageBus& bus, platform::Log& log, Events events);
    /// Ends a hold.
    ~GlobalAccelHotKeys() { endHold(); }
    GlobalAccelHotKeys(const GlobalAccelHotKeys&) = delete;
    GlobalAccelHotKeys& operator=(const GlobalAccelHotKeys&) = delete;

    /// Registers the event manager's key and modifiers. `onStatus` gets a status of the event
    /// manager as HotKeyMeans::registerHotKey() answers it, in this or a later turn.
    void add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers,
             OnStatus onStatus);
    /// `onDone` is called when KDE has deleted the shortcut, or does not answer.
    void remove(HotKeyNumber number, std::function<void()> onDone);
    /// The user asks for the combinations that other programs have. Those programs give them up
    /// until removeAll(); the log says which ones do. A later add() has the combination.
    void takeOver();
    /// As remove(), for every hotkey; and what other programs have given up goes back to them.
    void removeAll(std::function<void()> onDone);

    /// The program that has the shortcuts is gone. Ends a hold.
    void handleEnd() { endHold(); }
    /// Another such program is there, and knows no shortcuts.
    void handleStart();

  private:
    // A combination of the space bar.
    struct Combination {
        // Names the action on the bus.
        const char* action;
        const char* text;
        std::uint32_t modifiers;
        std::int32_t key;
    };

    // A combination that was refused, and the action of another program that has its key.
    struct Refusal {
        const Combination* combination;
        GlobalAccel::Action owner;
    };
    using OnRegistered = std::function<void(platform::OSStatus, const std::string& owner)>;

    static const Combination* combinationOf(std::uint32_t modifiers);
    std::optional<HotKeyNumber> numberOf(const std::string& action) const;
    void registerKey(HotKeyNumber number, OnRegistered onStatus);
    void handleRegistration(HotKeyNumber number, const Combination& combination,
                            GlobalAccel::Registration registration, OnRegistered onStatus);
    void takeAgreed(HotKeyNumber number, const Combination& combination,
                    const GlobalAccel::Action& owner, OnRegistered onStatus);
    void refuse(HotKeyNumber number, const Combination& combination,
                const std::optional<GlobalAccel::Action>& owner, const OnRegistered& onStatus);
    void takeNext(std::vector<Refusal> left);
    void setRefusal(const Combination& combination,
                    const std::optional<GlobalAccel::Action>& owner);
    void handlePressed(const std::string& action);
    void handleReleased(const std::string& action);
    void handleKeysChanged(const std::string& action, const std::vector<std::int32_t>& keys);
    // Ends the hold; empty without one.
    std::optional<HotKeyNumber> takeHold();
    void endHold();

    platform::Log& log_;
    Events events_;
    GlobalAccel globalAccel_;
    ForeignShortcuts foreign_{globalAccel_};
    std::vector<Refusal> refusals_;
    std::map<HotKeyNumber, const Combination*> hotKeys_;
    std::optional<HotKeyNumber> held_;
};

}  // namespace tarvik::linuxdesktop
