#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <vector>

#include "platform/EventManager.h"
#include "platform/linux/x11/HotKeys.h"

namespace tarvik::linuxdesktop {

class InputThread;

/// Hotkeys as grabs on the X server. Knows the space bar with Alt, Shift or both. Registering and
/// unregistering wait for the X server, 1 s at the most each. Main thread only.
class LinuxEventManager final : public platform::EventManager {
  public:
    /// The thread outlives the object.
    explicit LinuxEventManager(InputThread& thread) : thread_(thread) {}

    platform::EventTarget* applicationEventTarget() override;
    platform::OSStatus installEventHandler(platform::EventTarget* target,
                                           platform::EventHandlerProc handler,
                                           std::span<const platform::EventTypeSpec> types,
                                           void* userData,
                                           platform::EventHandlerRef* outRef) override;
    platform::OSStatus removeEventHandler(platform::EventHandlerRef handler) override;
    platform::OSStatus registerEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                           platform::EventHotKeyID id,
                                           platform::EventTarget* target, std::uint32_t options,
                                           platform::EventHotKeyRef* outRef) override;
    platform::OSStatus unregisterEventHotKey(platform::EventHotKeyRef hotKey) override;
    std::uint32_t eventKind(platform::Event* event) override;
    platform::OSStatus eventParameter(platform::Event* event, std::uint32_t name,
                                      std::uint32_t type, platform::EventHotKeyID* outId) override;

    /// Calls the handlers for an event of a hotkey, the newest first until one has handled it.
    /// Nothing happens when the hotkey is not registered any more.
    void deliver(HotKeyNumber number, std::uint32_t kind);

  private:
    struct Handler {
        platform::EventHandlerProc proc = nullptr;
        std::vector<platform::EventTypeSpec> types;
        void* userData = nullptr;
    };

    InputThread& thread_;
    // Handles are numbers, never 0, that are not used twice.
    std::uintptr_t lastHandle_ = 0;
    std::map<std::uintptr_t, Handler> handlers_;
    std::map<HotKeyNumber, platform::EventHotKeyID> hotKeys_;
    char target_ = 0;
};

}  // namespace tarvik::linuxdesktop
