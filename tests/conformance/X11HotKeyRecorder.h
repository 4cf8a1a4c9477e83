#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/EventManager.h"

namespace tarvik::conformance {

/// Registers hotkeys and writes down their events: "P1" for a press of identifier 1, "R1" for its
/// release.
class X11HotKeyRecorder {
  public:
    static constexpr std::uint32_t hold = platform::optionKeyMask;
    static constexpr std::uint32_t toggle = platform::optionKeyMask | platform::shiftKeyMask;

    explicit X11HotKeyRecorder(platform::EventManager& manager);
    ~X11HotKeyRecorder();
    X11HotKeyRecorder(const X11HotKeyRecorder&) = delete;
    X11HotKeyRecorder& operator=(const X11HotKeyRecorder&) = delete;

    /// The space bar with these modifiers.
    platform::OSStatus add(std::uint32_t modifiers, std::uint32_t id,
                           platform::EventHotKeyRef* ref = nullptr);
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

}  // namespace tarvik::conformance
