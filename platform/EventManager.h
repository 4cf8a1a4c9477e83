// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>

namespace tarvik::platform {

/// A status of the event manager; 0 is success.
using OSStatus = std::int32_t;

inline constexpr OSStatus noErr = 0;
/// A handler's answer that passes the event on to the next handler.
inline constexpr OSStatus eventNotHandledErr = -9874;
/// The combination is registered already.
inline constexpr OSStatus eventHotKeyExistsErr = -9878;
/// The combination cannot be registered on this desktop at all.
inline constexpr OSStatus eventHotKeyInvalidErr = -9879;
/// The event has no such parameter.
inline constexpr OSStatus eventParameterNotFoundErr = -9870;
/// There is no event manager (no display, no keyboard).
inline constexpr OSStatus eventInternalErr = -9868;

/// Four characters as one number, the first in the most significant byte.
constexpr std::uint32_t fourCharacterCode(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i) {
        code = code << 8 | static_cast<unsigned char>(text[i]);
    }
    return code;
}

inline constexpr std::uint32_t eventClassKeyboard = fourCharacterCode("keyb");
inline constexpr std::uint32_t eventHotKeyPressed = 5;
inline constexpr std::uint32_t eventHotKeyReleased = 6;
inline constexpr std::uint32_t eventParamDirectObject = fourCharacterCode("----");
inline constexpr std::uint32_t typeEventHotKeyID = fourCharacterCode("hkid");

/// Modifier bits of the event manager.
inline constexpr std::uint32_t shiftKeyMask = 0x0200;
inline constexpr std::uint32_t optionKeyMask = 0x0800;

/// The virtual key code of the space bar.
inline constexpr std::uint32_t spaceKeyCode = 49;

/// Identifies a hotkey in its events.
struct EventHotKeyID {
    std::uint32_t signature = 0;
    std::uint32_t id = 0;
};

/// A kind of event that a handler can be installed for.
struct EventTypeSpec {
    std::uint32_t eventClass = 0;
    std::uint32_t eventKind = 0;
};

/// An event while it is being handled.
class Event {
  public:
    virtual ~Event() = default;
};

class EventTarget;
class EventHandlerCall;

/// Handles of installed handlers and registered hotkeys; null means none.
struct EventHandler;
struct EventHotKey;
using EventHandlerRef = EventHandler*;
using EventHotKeyRef = EventHotKey*;

/// A handler. Its arguments are the next handler (not used), the event, and the user data given at
/// installation. Called on the main thread. Returns noErr, or eventNotHandledErr to pass the event
/// on to the next handler.
using EventHandlerProc = OSStatus (*)(EventHandlerCall* next, Event* event, void* userData);

/// System-wide hotkeys. Main thread only.
///
/// A registered combination reports one press event per key press of the user. Neither the length
/// of the press nor the keyboard's repetition of a held key adds another event. One release event
/// follows when the first key of the combination goes up. Lock keys do not matter.
class EventManager {
  public:
    virtual ~EventManager() = default;

    /// The event target that receives the events of hotkeys.
    virtual EventTarget* applicationEventTarget() = 0;

    /// Installs `handler` for the listed kinds of events and writes its handle to `outRef`. Every
    /// call of the handler gets `userData` unchanged.
    virtual OSStatus installEventHandler(EventTarget* target, EventHandlerProc handler,
                                         std::span<const EventTypeSpec> types, void* userData,
                                         EventHandlerRef* outRef) = 0;
    /// Removes a handler, which is not called again after this.
    virtual OSStatus removeEventHandler(EventHandlerRef handler) = 0;

    /// Registers a key with exactly these modifiers (shiftKeyMask, optionKeyMask) under `id` and
    /// writes its handle to `outRef`. Returns eventHotKeyExistsErr for a combination that this
    /// program holds already. Linux returns the same for a combination of another program; macOS
    /// gives a combination to several programs.
    virtual OSStatus registerEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                         EventHotKeyID id, EventTarget* target,
                                         std::uint32_t options, EventHotKeyRef* outRef) = 0;
    /// Gives a registered hotkey up.
    virtual OSStatus unregisterEventHotKey(EventHotKeyRef hotKey) = 0;

    /// The kind of `event`. Only while a handler handles the event.
    virtual std::uint32_t eventKind(Event* event) = 0;
    /// Reads a parameter of an event: the hotkey identifier under `name`, of type `type`. Returns
    /// eventParameterNotFoundErr when there is none.
    virtual OSStatus eventParameter(Event* event, std::uint32_t name, std::uint32_t type,
                                    EventHotKeyID* outId) = 0;
};

}  // namespace tarvik::platform
