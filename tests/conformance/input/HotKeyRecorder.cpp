// SPDX-License-Identifier: MIT

#include "tests/conformance/input/HotKeyRecorder.h"

#include <array>

namespace tarvik::tests {

HotKeyRecorder::HotKeyRecorder(platform::EventManager& manager) : manager_(manager) {
    constexpr std::array types = {
        platform::EventTypeSpec{platform::eventClassKeyboard, platform::eventHotKeyPressed},
        platform::EventTypeSpec{platform::eventClassKeyboard, platform::eventHotKeyReleased}};
    manager.installEventHandler(manager.applicationEventTarget(), &handle, types, this, &handler_);
}

HotKeyRecorder::~HotKeyRecorder() {
    for (const platform::EventHotKeyRef hotKey : hotKeys_) {
        manager_.unregisterEventHotKey(hotKey);
    }
    removeHandler();
}

platform::OSStatus HotKeyRecorder::add(std::uint32_t modifiers, std::uint32_t id,
                                       platform::EventHotKeyRef* ref) {
    platform::EventHotKeyRef hotKey = nullptr;
    const auto status = manager_.registerEventHotKey(platform::spaceKeyCode, modifiers,
                                                     {platform::fourCharacterCode("Test"), id},
                                                     manager_.applicationEventTarget(), 0, &hotKey);
    if (status == platform::noErr) {
        hotKeys_.push_back(hotKey);
    }
    if (ref != nullptr) {
        *ref = hotKey;
    }
    return status;
}

platform::OSStatus HotKeyRecorder::remove(platform::EventHotKeyRef hotKey) {
    std::erase(hotKeys_, hotKey);
    return manager_.unregisterEventHotKey(hotKey);
}

void HotKeyRecorder::removeHandler() {
    if (handler_ != nullptr) {
        manager_.removeEventHandler(handler_);
        handler_ = nullptr;
    }
}

platform::OSStatus HotKeyRecorder::handle(platform::EventHandlerCall* /*next*/,
                                          platform::Event* event, void* userData) {
    auto& self = *static_cast<HotKeyRecorder*>(userData);
    platform::EventHotKeyID id;
    if (self.manager_.eventParameter(event, platform::eventParamDirectObject,
                                     platform::typeEventHotKeyID, &id) != platform::noErr) {
        return platform::eventNotHandledErr;
    }
    const bool isPress = self.manager_.eventKind(event) == platform::eventHotKeyPressed;
    self.events += (isPress ? "P" : "R") + std::to_string(id.id);
    if (self.onEvent) {
        self.onEvent();
    }
    return platform::noErr;
}

}  // namespace tarvik::tests
