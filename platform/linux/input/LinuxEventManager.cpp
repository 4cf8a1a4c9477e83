// SPDX-License-Identifier: MIT

#include "platform/linux/input/LinuxEventManager.h"

#include <algorithm>

#include "platform/linux/input/CombinationText.h"

namespace tarvik::linuxdesktop {

namespace {

class HotKeyEvent final : public platform::Event {
  public:
    HotKeyEvent(std::uint32_t kind, platform::EventHotKeyID id) : kind_(kind), id_(id) {}
    std::uint32_t kind() const { return kind_; }
    platform::EventHotKeyID id() const { return id_; }

  private:
    std::uint32_t kind_;
    platform::EventHotKeyID id_;
};

}  // namespace

platform::EventTarget* LinuxEventManager::applicationEventTarget() {
    return reinterpret_cast<platform::EventTarget*>(&target_);
}

platform::OSStatus LinuxEventManager::installEventHandler(
    platform::EventTarget* target, platform::EventHandlerProc handler,
    std::span<const platform::EventTypeSpec> types, void* userData,
    platform::EventHandlerRef* outRef) {
    if (target != applicationEventTarget() || handler == nullptr || means_ == nullptr) {
        return platform::eventInternalErr;
    }
    handlers_[++lastHandle_] = {handler, {types.begin(), types.end()}, userData};
    *outRef = reinterpret_cast<platform::EventHandlerRef>(lastHandle_);
    return platform::noErr;
}

platform::OSStatus LinuxEventManager::removeEventHandler(platform::EventHandlerRef handler) {
    if (handlers_.erase(reinterpret_cast<std::uintptr_t>(handler)) == 0) {
        return platform::eventInternalErr;
    }
    // Nobody has a handle by which to unregister these.
    if (handlers_.empty()) {
        dropRefused([](const HotKey&) { return true; });
    }
    return platform::noErr;
}

platform::OSStatus LinuxEventManager::registerEventHotKey(
    std::uint32_t keyCode, std::uint32_t modifiers, platform::EventHotKeyID id,
    platform::EventTarget* target, std::uint32_t /*options*/, platform::EventHotKeyRef* outRef) {
    if (target != applicationEventTarget() || means_ == nullptr) {
        return platform::eventInternalErr;
    }
    dropRefused([keyCode, modifiers](const HotKey& hotKey) {
        return hotKey.keyCode == keyCode && hotKey.modifiers == modifiers;
    });
    const HotKeyNumber number = ++lastHandle_;
    const platform::OSStatus status = means_->registerHotKey(number, keyCode, modifiers);
    if (status != platform::eventHotKeyInvalidErr) {
        hotKeys_[number] = {id, keyCode, modifiers, status != platform::noErr};
    }
    if (status == platform::noErr) {
        *outRef = reinterpret_cast<platform::EventHotKeyRef>(number);
    }
    return status;
}

void LinuxEventManager::dropRefused(const std::function<bool(const HotKey&)>& matches) {
    std::erase_if(hotKeys_, [&](const auto& entry) {
        const auto& [number, hotKey] = entry;
        const bool isDropped = hotKey.isRefused && matches(hotKey);
        if (isDropped) {
            means_->unregisterHotKey(number);
        }
        return isDropped;
    });
}

platform::OSStatus LinuxEventManager::unregisterEventHotKey(platform::EventHotKeyRef hotKey) {
    const auto number = reinterpret_cast<HotKeyNumber>(hotKey);
    if (hotKeys_.erase(number) == 0) {
        return platform::eventHotKeyInvalidErr;
    }
    means_->unregisterHotKey(number);
    return platform::noErr;
}

std::uint32_t LinuxEventManager::eventKind(platform::Event* event) {
    return static_cast<HotKeyEvent*>(event)->kind();
}

platform::OSStatus LinuxEventManager::eventParameter(platform::Event* event, std::uint32_t name,
                                                     std::uint32_t type,
                                                     platform::EventHotKeyID* outId) {
    if (name != platform::eventParamDirectObject || type != platform::typeEventHotKeyID) {
        return platform::eventParameterNotFoundErr;
    }
    *outId = static_cast<HotKeyEvent*>(event)->id();
    return platform::noErr;
}

void LinuxEventManager::onPressed(HotKeyNumber number) {
    deliver(number, platform::eventHotKeyPressed);
}

void LinuxEventManager::onReleased(HotKeyNumber number) {
    deliver(number, platform::eventHotKeyReleased);
}

void LinuxEventManager::onLost(HotKeyNumber number, const std::string& reason) {
    if (hotKeys_.contains(number)) {
        log_.write("TarvikDictate: a hotkey is lost: " + reason);
    }
}

void LinuxEventManager::onRegistered(HotKeyNumber number) {
    if (const auto found = hotKeys_.find(number); found != hotKeys_.end()) {
        log_.write("TarvikDictate: a hotkey is registered now: " +
                   combinationText(found->second.modifiers));
    }
}

void LinuxEventManager::deliver(HotKeyNumber number, std::uint32_t kind) {
    const auto hotKey = hotKeys_.find(number);
    if (hotKey == hotKeys_.end()) {
        return;
    }
    HotKeyEvent event(kind, hotKey->second.id);
    // A handler may remove itself or others.
    std::vector<std::uintptr_t> handles;
    for (auto entry = handlers_.rbegin(); entry != handlers_.rend(); ++entry) {
        if (std::ranges::any_of(entry->second.types, [&](const platform::EventTypeSpec& type) {
                return type.eventClass == platform::eventClassKeyboard && type.eventKind == kind;
            })) {
            handles.push_back(entry->first);
        }
    }
    for (const std::uintptr_t handle : handles) {
        const auto found = handlers_.find(handle);
        if (found != handlers_.end() &&
            found->second.proc(nullptr, &event, found->second.userData) !=
                platform::eventNotHandledErr) {
            return;
        }
    }
}

}  // namespace tarvik::linuxdesktop
