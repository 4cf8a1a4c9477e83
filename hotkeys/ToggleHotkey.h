// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/EventManager.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"

namespace tarvik {

/// The two system-wide hotkeys: ⌥ Space, held while talking, and ⌥ ⇧ Space, tapped to toggle.
///
/// Main thread only. The callbacks run on the main thread, one at a time, in the order of the key
/// events, after the event manager's handler has returned. An empty callback is skipped. Every
/// press that the event manager reports is passed on; nothing is filtered here.
///
/// Made with std::make_shared. The event manager holds only the address of a started object, and
/// destruction unregisters nothing. The owner therefore keeps the object alive until stop().
class ToggleHotkey : public std::enable_shared_from_this<ToggleHotkey> {
  public:
    ToggleHotkey(platform::EventManager& eventManager, platform::MainQueue& mainQueue,
                 platform::Log& log);

    /// The hold hotkey went down. Set before start(), like the other callbacks.
    std::function<void()> onPress;
    /// The hold hotkey went up.
    std::function<void()> onRelease;
    /// The toggle hotkey went down.
    std::function<void()> onToggle;

    /// Installs the event handler and registers both hotkeys. Logs each success and each failure.
    /// Called only after construction or stop().
    void start();

    /// Unregisters both hotkeys and removes the event handler. Allowed any number of times.
    void stop();

  private:
    static platform::OSStatus handleEvent(platform::EventHandlerCall* next, platform::Event* event,
                                          void* userData);

    void registerHotKey(std::uint32_t modifiers, std::uint32_t id, platform::EventHotKeyRef* ref,
                        std::string_view successLine, std::string_view failurePrefix);
    void dispatch(std::uint32_t id, std::uint32_t kind) const;

    platform::EventHotKeyRef holdRef_ = nullptr;
    platform::EventHotKeyRef toggleRef_ = nullptr;
    platform::EventHandlerRef eventHandlerRef_ = nullptr;

    static constexpr std::uint32_t keyCode = platform::spaceKeyCode;
    static constexpr std::uint32_t holdModifiers = platform::optionKeyMask;
    static constexpr std::uint32_t toggleModifiers =
        platform::optionKeyMask | platform::shiftKeyMask;
    static constexpr std::uint32_t hotKeySignature = platform::fourCharacterCode("TaDi");
    static constexpr std::uint32_t holdID = 1;
    static constexpr std::uint32_t toggleID = 2;

    platform::EventManager& eventManager_;
    platform::MainQueue& mainQueue_;
    platform::Log& log_;
};

}  // namespace tarvik
