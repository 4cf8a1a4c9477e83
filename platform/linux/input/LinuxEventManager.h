// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "platform/EventManager.h"
#include "platform/Log.h"
#include "platform/linux/input/HotKeyMeans.h"

namespace tarvik::linuxdesktop {

/// The event manager's hotkeys, whichever means hears them. Main thread only. Registering and
/// unregistering wait for the means, 1 s at the most each.
///
/// A registration that was refused stays wanted until the same combination is registered again, or
/// the last handler is removed. Its events are delivered once the means has the combination.
class LinuxEventManager final : public platform::EventManager, public HotKeyListener {
  public:
    /// `log` outlives the object.
    explicit LinuxEventManager(platform::Log& log) : log_(log) {}

    /// Has `means` hear the hotkeys from now on. The means outlives every call. Without one no
    /// handler can be installed and no hotkey be registered.
    void setMeans(HotKeyMeans* means) { means_ = means; }

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

    /// The events of a hotkey that is not registered any more are dropped.
    void onPressed(HotKeyNumber number) override;
    void onReleased(HotKeyNumber number) override;
    void onLost(HotKeyNumber number, const std::string& reason) override;
    void onRegistered(HotKeyNumber number) override;

  private:
    struct Handler {
        platform::EventHandlerProc proc = nullptr;
        std::vector<platform::EventTypeSpec> types;
        void* userData = nullptr;
    };
    struct HotKey {
        platform::EventHotKeyID id;
        std::uint32_t keyCode = 0;
        std::uint32_t modifiers = 0;
        // The application has no handle.
        bool isRefused = false;
    };

    /// Wants the refused hotkeys no more for which `matches` holds.
    void dropRefused(const std::function<bool(const HotKey&)>& matches);
    /// Calls the handlers, the newest first until one has handled the event.
    void deliver(HotKeyNumber number, std::uint32_t kind);

    platform::Log& log_;
    HotKeyMeans* means_ = nullptr;
    // Handles are numbers, never 0, that are not used twice.
    std::uintptr_t lastHandle_ = 0;
    std::map<std::uintptr_t, Handler> handlers_;
    std::map<HotKeyNumber, HotKey> hotKeys_;
    char target_ = 0;
};

}  // namespace tarvik::linuxdesktop
