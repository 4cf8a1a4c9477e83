// SPDX-License-Identifier: MIT

#include "hotkeys/ToggleHotkey.h"

#include <array>
#include <string>

namespace tarvik {

using platform::eventNotHandledErr;
using platform::noErr;
using platform::OSStatus;

ToggleHotkey::ToggleHotkey(platform::EventManager& eventManager, platform::MainQueue& mainQueue,
                           platform::Log& log)
    : eventManager_(eventManager), mainQueue_(mainQueue), log_(log) {}

void ToggleHotkey::start() {
    static constexpr std::array types = {
        platform::EventTypeSpec{platform::eventClassKeyboard, platform::eventHotKeyPressed},
        platform::EventTypeSpec{platform::eventClassKeyboard, platform::eventHotKeyReleased},
    };
    const OSStatus status = eventManager_.installEventHandler(
        eventManager_.applicationEventTarget(), &handleEvent, types, this, &eventHandlerRef_);
    if (status != noErr) {
        log_.write("TarvikDictate: InstallEventHandler failed: " + std::to_string(status));
        return;
    }
    registerHotKey(holdModifiers, holdID, &holdRef_,
                   "TarvikDictate: hold-to-talk registered (⌥ Space)",
                   "TarvikDictate: hold register failed: ");
    registerHotKey(toggleModifiers, toggleID, &toggleRef_,
                   "TarvikDictate: tap-to-toggle registered (⌥ ⇧ Space)",
                   "TarvikDictate: toggle register failed: ");
}

void ToggleHotkey::registerHotKey(std::uint32_t modifiers, std::uint32_t id,
                                  platform::EventHotKeyRef* ref, std::string_view successLine,
                                  std::string_view failurePrefix) {
    platform::EventHotKeyRef registered = nullptr;
    const OSStatus status =
        eventManager_.registerEventHotKey(keyCode, modifiers, {hotKeySignature, id},
                                          eventManager_.applicationEventTarget(), 0, &registered);
    if (status != noErr || registered == nullptr) {
        log_.write(std::string(failurePrefix) + std::to_string(status));
        return;
    }
    *ref = registered;
    log_.write(successLine);
}

// Only posts to the main queue: the callbacks may take long, and the event manager waits for this
// handler.
OSStatus ToggleHotkey::handleEvent(platform::EventHandlerCall* /*next*/, platform::Event* event,
                                   void* userData) {
    if (userData == nullptr || event == nullptr) {
        return eventNotHandledErr;
    }
    const std::shared_ptr<ToggleHotkey> self =
        static_cast<ToggleHotkey*>(userData)->shared_from_this();
    const std::uint32_t kind = self->eventManager_.eventKind(event);
    platform::EventHotKeyID identifier;
    const OSStatus status = self->eventManager_.eventParameter(
        event, platform::eventParamDirectObject, platform::typeEventHotKeyID, &identifier);
    if (status != noErr) {
        return eventNotHandledErr;
    }
    self->mainQueue_.async([self, identifier, kind] { self->dispatch(identifier.id, kind); });
    return noErr;
}

void ToggleHotkey::dispatch(std::uint32_t id, std::uint32_t kind) const {
    const std::function<void()>* callback = nullptr;
    if (id == holdID && kind == platform::eventHotKeyPressed) {
        callback = &onPress;
    } else if (id == holdID && kind == platform::eventHotKeyReleased) {
        callback = &onRelease;
    } else if (id == toggleID && kind == platform::eventHotKeyPressed) {
        callback = &onToggle;
    }
    if (callback != nullptr && *callback) {
        (*callback)();
    }
}

void ToggleHotkey::stop() {
    // The statuses are ignored: an error only means that there is nothing left to undo.
    if (holdRef_ != nullptr) {
        eventManager_.unregisterEventHotKey(holdRef_);
        holdRef_ = nullptr;
    }
    if (toggleRef_ != nullptr) {
        eventManager_.unregisterEventHotKey(toggleRef_);
        toggleRef_ = nullptr;
    }
    if (eventHandlerRef_ != nullptr) {
        eventManager_.removeEventHandler(eventHandlerRef_);
        eventHandlerRef_ = nullptr;
    }
}

}  // namespace tarvik
