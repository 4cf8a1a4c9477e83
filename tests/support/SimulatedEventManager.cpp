// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedEventManager.h"

#include <algorithm>

namespace tarvik::simulated {

namespace {

class SimulatedEvent final : public platform::Event {
  public:
    SimulatedEvent(std::uint32_t kind, std::optional<platform::EventHotKeyID> id)
        : kind_(kind), id_(id) {}
    std::uint32_t kind() const { return kind_; }
    const std::optional<platform::EventHotKeyID>& id() const { return id_; }

  private:
    std::uint32_t kind_;
    std::optional<platform::EventHotKeyID> id_;
};

std::string fourCharacters(std::uint32_t code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        text += static_cast<char>(code >> shift & 0xFF);
    }
    return text;
}

}  // namespace

platform::EventTarget* SimulatedEventManager::applicationEventTarget() {
    ++targetRequests;
    return reinterpret_cast<platform::EventTarget*>(&target_);
}

platform::OSStatus SimulatedEventManager::installEventHandler(
    platform::EventTarget* target, platform::EventHandlerProc handler,
    std::span<const platform::EventTypeSpec> types, void* userData,
    platform::EventHandlerRef* outRef) {
    journal_.add("installEventHandler");
    if (installStatus != platform::noErr) {
        return installStatus;
    }
    if (target != reinterpret_cast<platform::EventTarget*>(&target_)) {
        return platform::eventInternalErr;
    }
    lastHandler_ = {handler, {types.begin(), types.end()}, userData};
    *outRef = reinterpret_cast<platform::EventHandlerRef>(&handles_.emplace_back());
    handlers_[*outRef] = lastHandler_;
    return platform::noErr;
}

platform::OSStatus SimulatedEventManager::removeEventHandler(platform::EventHandlerRef handler) {
    journal_.add("removeEventHandler");
    return handlers_.erase(handler) == 1 ? platform::noErr : platform::eventInternalErr;
}

platform::OSStatus SimulatedEventManager::registerEventHotKey(
    std::uint32_t keyCode, std::uint32_t modifiers, platform::EventHotKeyID id,
    platform::EventTarget* target, std::uint32_t options, platform::EventHotKeyRef* outRef) {
    journal_.add("registerEventHotKey " + std::to_string(keyCode) + " " +
                 std::to_string(modifiers) + " " + fourCharacters(id.signature) + " " +
                 std::to_string(id.id) + " " + std::to_string(options));
    if (const auto status = registerStatus.find(id.id);
        status != registerStatus.end() && status->second != platform::noErr) {
        *outRef = reinterpret_cast<platform::EventHotKeyRef>(&handles_.emplace_back());
        return status->second;
    }
    if (target != reinterpret_cast<platform::EventTarget*>(&target_)) {
        return platform::eventInternalErr;
    }
    if (taken_.contains({keyCode, modifiers}) || idOf(keyCode, modifiers)) {
        return platform::eventHotKeyExistsErr;
    }
    if (idsWithoutHandle.contains(id.id)) {
        *outRef = nullptr;
        return platform::noErr;
    }
    *outRef = reinterpret_cast<platform::EventHotKeyRef>(&handles_.emplace_back());
    hotKeys_[*outRef] = {keyCode, modifiers, id};
    return platform::noErr;
}

platform::OSStatus SimulatedEventManager::unregisterEventHotKey(platform::EventHotKeyRef hotKey) {
    const auto found = hotKeys_.find(hotKey);
    journal_.add("unregisterEventHotKey " +
                 (found == hotKeys_.end() ? "unknown" : std::to_string(found->second.id.id)));
    if (found == hotKeys_.end()) {
        return platform::eventHotKeyInvalidErr;
    }
    hotKeys_.erase(found);
    return platform::noErr;
}

std::uint32_t SimulatedEventManager::eventKind(platform::Event* event) {
    return static_cast<SimulatedEvent*>(event)->kind();
}

platform::OSStatus SimulatedEventManager::eventParameter(platform::Event* event, std::uint32_t name,
                                                         std::uint32_t type,
                                                         platform::EventHotKeyID* outId) {
    const auto& id = static_cast<SimulatedEvent*>(event)->id();
    if (!id || name != platform::eventParamDirectObject || type != platform::typeEventHotKeyID) {
        return platform::eventParameterNotFoundErr;
    }
    *outId = *id;
    return platform::noErr;
}

std::optional<platform::EventHotKeyID> SimulatedEventManager::idOf(std::uint32_t keyCode,
                                                                   std::uint32_t modifiers) const {
    for (const auto& [handle, hotKey] : hotKeys_) {
        if (hotKey.keyCode == keyCode && hotKey.modifiers == modifiers) {
            return hotKey.id;
        }
    }
    return std::nullopt;
}

std::optional<platform::EventHotKeyID> SimulatedEventManager::idWithNumber(std::uint32_t id) const {
    for (const auto& [handle, hotKey] : hotKeys_) {
        if (hotKey.id.id == id) {
            return hotKey.id;
        }
    }
    return std::nullopt;
}

platform::OSStatus SimulatedEventManager::sendTo(std::optional<platform::EventHotKeyID> id,
                                                 std::uint32_t kind) {
    return id ? sendEvent(kind, id) : platform::eventNotHandledErr;
}

platform::OSStatus SimulatedEventManager::press(std::uint32_t id) {
    return sendTo(idWithNumber(id), platform::eventHotKeyPressed);
}

platform::OSStatus SimulatedEventManager::release(std::uint32_t id) {
    return sendTo(idWithNumber(id), platform::eventHotKeyReleased);
}

platform::OSStatus SimulatedEventManager::press(std::uint32_t keyCode, std::uint32_t modifiers) {
    return sendTo(idOf(keyCode, modifiers), platform::eventHotKeyPressed);
}

platform::OSStatus SimulatedEventManager::release(std::uint32_t keyCode, std::uint32_t modifiers) {
    return sendTo(idOf(keyCode, modifiers), platform::eventHotKeyReleased);
}

platform::OSStatus SimulatedEventManager::sendEvent(std::uint32_t kind,
                                                    std::optional<platform::EventHotKeyID> id) {
    SimulatedEvent event(kind, id);
    const auto handlers = handlers_;
    for (const auto& [handle, handler] : handlers) {
        const bool wanted = std::any_of(
            handler.types.begin(), handler.types.end(), [&](const platform::EventTypeSpec& type) {
                return type.eventClass == platform::eventClassKeyboard && type.eventKind == kind;
            });
        if (wanted && handlers_.contains(handle)) {
            const platform::OSStatus status = handler.proc(nullptr, &event, handler.userData);
            if (status != platform::eventNotHandledErr) {
                return status;
            }
        }
    }
    return platform::eventNotHandledErr;
}

platform::OSStatus SimulatedEventManager::callHandlerWithoutEvent() {
    return lastHandler_.proc(nullptr, nullptr, lastHandler_.userData);
}

platform::OSStatus SimulatedEventManager::callHandlerWithoutUserData() {
    SimulatedEvent event(platform::eventHotKeyPressed, platform::EventHotKeyID{0, 1});
    return lastHandler_.proc(nullptr, &event, nullptr);
}

void SimulatedEventManager::take(std::uint32_t keyCode, std::uint32_t modifiers) {
    taken_.insert({keyCode, modifiers});
}

}  // namespace tarvik::simulated
