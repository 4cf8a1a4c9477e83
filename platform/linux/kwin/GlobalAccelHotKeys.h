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
#include "platform/linux/input/SessionHotKeys.h"
#include "platform/linux/kwin/ForeignShortcuts.h"
#include "platform/linux/kwin/GlobalAccel.h"

namespace tarvik::linuxdesktop {

/// Key combinations as global shortcuts of KDE, and which of them is held. Loop thread only.
///
/// KDE keeps the shortcuts of a program that was killed. The next start has the same names for
/// them, and so takes them over.
class GlobalAccelHotKeys final : public SessionHotKeys {
  public:
    /// Gets whether takeOver() would get a combination that was refused.
    using OnTaken = std::function<void(bool canTakeOver)>;
    /// A hold begins or ends, also by remove(). Before the other events.
    using OnHold = std::function<void(bool isHeld)>;

    /// The references outlive the object and its callbacks.
    GlobalAccelHotKeys(MessageBus& bus, platform::Log& log, Events events, OnTaken onTaken,
                       OnHold onHold);
    ~GlobalAccelHotKeys() override { endHold(); }
    GlobalAccelHotKeys(const GlobalAccelHotKeys&) = delete;
    GlobalAccelHotKeys& operator=(const GlobalAccelHotKeys&) = delete;

    void add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers,
             OnStatus onStatus) override;
    /// `onDone` is called also when KDE does not answer.
    void remove(HotKeyNumber number, std::function<void()> onDone) override;
    /// What other programs have given up goes back to them.
    void removeAll(std::function<void()> onDone) override;

    /// The user asks for the combinations that other programs have. Those programs give them up
    /// until removeAll(); the log says which ones do. Then `onFreed` is called.
    void takeOver();

    /// The program that has the shortcuts is gone. Ends a hold.
    void handleEnd() { endHold(); }

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
    static const Combination* combinationOf(std::uint32_t modifiers);
    std::optional<HotKeyNumber> numberOf(const std::string& action) const;
    void registerKey(HotKeyNumber number, OnStatus onStatus);
    void handleRegistration(HotKeyNumber number, const Combination& combination,
                            GlobalAccel::Registration registration, OnStatus onStatus);
    void takeAgreed(HotKeyNumber number, const Combination& combination,
                    const GlobalAccel::Action& owner, OnStatus onStatus);
    void refuse(HotKeyNumber number, const Combination& combination,
                const std::optional<GlobalAccel::Action>& owner, const OnStatus& onStatus);
    void takeNext(std::vector<Refusal> left, bool hasTaken);
    void setRefusal(const Combination& combination,
                    const std::optional<GlobalAccel::Action>& owner);
    void handlePressed(const std::string& action);
    void handleReleased(const std::string& action);
    void handleKeysChanged(const std::string& action, const std::vector<std::int32_t>& keys);
    // Ends the hold; empty without one.
    std::optional<HotKeyNumber> takeHold();
    void endHold();

    platform::Log& log_;
    const Events events_;
    const OnTaken onTaken_;
    const OnHold onHold_;
    GlobalAccel globalAccel_;
    ForeignShortcuts foreign_{globalAccel_};
    std::vector<Refusal> refusals_;
    std::map<HotKeyNumber, const Combination*> hotKeys_;
    std::optional<HotKeyNumber> held_;
};

}  // namespace tarvik::linuxdesktop
