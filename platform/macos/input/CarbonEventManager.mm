// SPDX-License-Identifier: MIT

#import "platform/macos/input/CarbonEventManager.h"

#import <Carbon/Carbon.h>

#include <memory>
#include <vector>

// The user data of a Carbon handler, from the handler's installation to its removal.
struct tarvik::platform::EventHandler {
    EventHandlerProc handler = nullptr;
    void* userData = nullptr;
    ::EventHandlerRef reference = nullptr;
};

namespace tarvik::macdesktop {

namespace {

class CarbonEvent final : public platform::Event {
  public:
    explicit CarbonEvent(EventRef event) : event_(event) {}
    EventRef get() const { return event_; }

  private:
    /// Owned by Carbon; valid during the handler's call.
    EventRef event_;
};

EventRef carbonEvent(platform::Event* event) {
    return static_cast<CarbonEvent*>(event)->get();
}

EventTargetRef carbonTarget(platform::EventTarget* target) {
    return reinterpret_cast<EventTargetRef>(target);
}

OSStatus callHandler(EventHandlerCallRef next, EventRef event, void* installation) {
    const auto* installed = static_cast<platform::EventHandler*>(installation);
    CarbonEvent wrapped(event);
    return installed->handler(reinterpret_cast<platform::EventHandlerCall*>(next),
                              event != nullptr ? &wrapped : nullptr, installed->userData);
}

}  // namespace

platform::EventTarget* CarbonEventManager::applicationEventTarget() {
    return reinterpret_cast<platform::EventTarget*>(GetApplicationEventTarget());
}

platform::OSStatus CarbonEventManager::installEventHandler(
    platform::EventTarget* target, platform::EventHandlerProc handler,
    std::span<const platform::EventTypeSpec> types, void* userData,
    platform::EventHandlerRef* outRef) {
    std::vector<EventTypeSpec> carbonTypes;
    for (const platform::EventTypeSpec& type : types) {
        carbonTypes.push_back({type.eventClass, type.eventKind});
    }
    auto installed = std::make_unique<platform::EventHandler>();
    installed->handler = handler;
    installed->userData = userData;
    const OSStatus status =
        InstallEventHandler(carbonTarget(target), callHandler, carbonTypes.size(),
                            carbonTypes.data(), installed.get(), &installed->reference);
    if (status == platform::noErr) {
        *outRef = installed.release();
    }
    return status;
}

platform::OSStatus CarbonEventManager::removeEventHandler(platform::EventHandlerRef handler) {
    const std::unique_ptr<platform::EventHandler> installed(handler);
    return RemoveEventHandler(installed->reference);
}

platform::OSStatus CarbonEventManager::registerEventHotKey(
    std::uint32_t keyCode, std::uint32_t modifiers, platform::EventHotKeyID id,
    platform::EventTarget* target, std::uint32_t options, platform::EventHotKeyRef* outRef) {
    EventHotKeyRef reference = nullptr;
    const OSStatus status = RegisterEventHotKey(keyCode, modifiers, {id.signature, id.id},
                                                carbonTarget(target), options, &reference);
    *outRef = reinterpret_cast<platform::EventHotKeyRef>(reference);
    return status;
}

platform::OSStatus CarbonEventManager::unregisterEventHotKey(platform::EventHotKeyRef hotKey) {
    return UnregisterEventHotKey(reinterpret_cast<EventHotKeyRef>(hotKey));
}

std::uint32_t CarbonEventManager::eventKind(platform::Event* event) {
    return GetEventKind(carbonEvent(event));
}

platform::OSStatus CarbonEventManager::eventParameter(platform::Event* event, std::uint32_t name,
                                                      std::uint32_t type,
                                                      platform::EventHotKeyID* outId) {
    EventHotKeyID id{};
    const OSStatus status =
        GetEventParameter(carbonEvent(event), name, type, nullptr, sizeof(id), nullptr, &id);
    if (status == platform::noErr) {
        *outId = {id.signature, id.id};
    }
    return status;
}

}  // namespace tarvik::macdesktop
