#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/EventManager.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"

namespace tarvik {

/// The two system-wide hotkeys: ⌥ Space, held to talk, and ⌥ ⇧ Space, tapped to toggle.
///
/// Main thread only. The callbacks run on the main thread, one at a time, in the order of the key
/// events and after the event manager's handler has returned; one that is not set is skipped.
/// Every press that the event manager reports is passed on; nothing is filtered here.
///
/// The event manager holds only the bare address of a started object: the owner keeps it alive
/// until stop(), for destruction unregisters nothing. It is made with std::make_shared.
class ToggleHotkey : public std::enable_shared_from_this<ToggleHotkey> {
  public:
    ToggleHotkey(platform::EventManager& eventManager, platform::MainQueue& mainQueue,
                 platform::Log& log);

    /// The hold hotkey went down; it went up; the toggle hotkey went down. Set before start().
    std::function<void()> onPress;
    std::function<void()> onRelease;
    std::function<void()> onToggle;

    /// Installs the event handler and registers both hotkeys; what succeeded is in the log. Only
    /// after construction or stop().
    void start();

    /// Unregisters both hotkeys and removes the handler. Any number of times.
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
