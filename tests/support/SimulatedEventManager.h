// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/EventManager.h"
#include "tests/support/Journal.h"

namespace tarvik::simulated {

/// An event manager whose hotkeys a test presses.
class SimulatedEventManager final : public platform::EventManager {
  public:
    explicit SimulatedEventManager(Journal& journal) : journal_(journal) {}

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

    /// The user presses or releases the combination registered under `id`. Returns the handler's
    /// status, or eventNotHandledErr when no combination has this `id`.
    platform::OSStatus press(std::uint32_t id);
    platform::OSStatus release(std::uint32_t id);
    /// As above, for a combination.
    platform::OSStatus press(std::uint32_t keyCode, std::uint32_t modifiers);
    platform::OSStatus release(std::uint32_t keyCode, std::uint32_t modifiers);

    /// Sends an event of any kind and identifier, registered or not. The parameter of an event
    /// without an identifier cannot be read.
    platform::OSStatus sendEvent(std::uint32_t kind, std::optional<platform::EventHotKeyID> id);
    /// Calls the last installed handler, without an event or without user data.
    platform::OSStatus callHandlerWithoutEvent();
    platform::OSStatus callHandlerWithoutUserData();

    /// Has another program hold this combination.
    void take(std::uint32_t keyCode, std::uint32_t modifiers);

    std::size_t handlers() const { return handlers_.size(); }
    std::size_t hotKeys() const { return hotKeys_.size(); }
    /// The user data of the last installed handler.
    void* lastUserData() const { return lastHandler_.userData; }
    /// The kinds of events of the last installed handler.
    const std::vector<platform::EventTypeSpec>& lastTypes() const { return lastHandler_.types; }
    /// How often the application's event target was requested.
    int targetRequests = 0;

    /// The result of installing a handler.
    platform::OSStatus installStatus = platform::noErr;
    /// The result of registering under an identifier. Even a failure comes with a handle.
    std::map<std::uint32_t, platform::OSStatus> registerStatus;
    /// The identifiers whose registration succeeds without a handle.
    std::set<std::uint32_t> idsWithoutHandle;

  private:
    struct Handler {
        platform::EventHandlerProc proc = nullptr;
        std::vector<platform::EventTypeSpec> types;
        void* userData = nullptr;
    };
    struct HotKey {
        std::uint32_t keyCode = 0;
        std::uint32_t modifiers = 0;
        platform::EventHotKeyID id;
    };

    std::optional<platform::EventHotKeyID> idOf(std::uint32_t keyCode,
                                                std::uint32_t modifiers) const;
    std::optional<platform::EventHotKeyID> idWithNumber(std::uint32_t id) const;
    platform::OSStatus sendTo(std::optional<platform::EventHotKeyID> id, std::uint32_t kind);

    Journal& journal_;
    // The addresses of these elements are the handles, so that no handle is used twice.
    std::deque<char> handles_;
    std::map<platform::EventHandlerRef, Handler> handlers_;
    std::map<platform::EventHotKeyRef, HotKey> hotKeys_;
    std::set<std::pair<std::uint32_t, std::uint32_t>> taken_;
    Handler lastHandler_;
    char target_ = 0;
};

}  // namespace tarvik::simulated
