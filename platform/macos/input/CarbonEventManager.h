// SPDX-License-Identifier: MIT
#pragma once

#include "platform/EventManager.h"

namespace tarvik::macdesktop {

/// Hotkeys by Carbon's event manager. The handles of targets and hotkeys are Carbon's own. The
/// handle of an event handler is an object of this class, freed by removeEventHandler(). Main
/// thread only.
class CarbonEventManager final : public platform::EventManager {
  public:
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
};

}  // namespace tarvik::macdesktop
