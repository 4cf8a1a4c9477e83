// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/EventManager.h"

namespace tarvik::tests {

/// Registers hotkeys and writes down their events: "P1" for a press of identifier 1, "R1" for its
/// release.
class HotKeyRecorder {
  public:
    static constexpr std::uint32_t hold = platform::optionKeyMask;
    static constexpr std::uint32_t toggle = platform::optionKeyMask | platform::shiftKeyMask;

    explicit HotKeyRecorder(platform::EventManager& manager);
    ~HotKeyRecorder();
    HotKeyRecorder(const HotKeyRecorder&) = delete;
    HotKeyRecorder& operator=(const HotKeyRecorder&) = delete;

    /// The space bar with these modifiers.
    platform::OSStatus add(std::uint32_t modifiers, std::uint32_t id,
                           platform::EventHotKeyRef* ref = nullptr);
    /// Unregisters a hotkey before the recorder's destruction does.
    platform::OSStatus remove(platform::EventHotKeyRef hotKey);
    void removeHandler();

    std::string events;
    /// Called after each event was written down.
    std::function<void()> onEvent;

  private:
    static platform::OSStatus handle(platform::EventHandlerCall* next, platform::Event* event,
                                     void* userData);

    platform::EventManager& manager_;
    platform::EventHandlerRef handler_ = nullptr;
    std::vector<platform::EventHotKeyRef> hotKeys_;
};

}  // namespace tarvik::tests
