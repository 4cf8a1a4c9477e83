#pragma once

#include <cstdint>
#include <span>

namespace tarvik::platform {

/// A status of the event manager; 0 is success.
using OSStatus = std::int32_t;

inline constexpr OSStatus noErr = 0;
/// A handler's answer that passes the event on to the next handler.
inline constexpr OSStatus eventNotHandledErr = -9874;
/// The combination is already registered by somebody else.
inline constexpr OSStatus eventHotKeyExistsErr = -9878;
/// The combination cannot be registered on this desktop at all.
inline constexpr OSStatus eventHotKeyInvalidErr = -9879;
/// The event has no such parameter.
inline constexpr OSStatus eventParameterNotFoundErr = -9870;
/// The event manager is not there (no display, no keyboard).
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

/// Modifier bits as the event manager counts them.
inline constexpr std::uint32_t shiftKeyMask = 0x0200;
inline constexpr std::uint32_t optionKeyMask = 0x0800;

/// The virtual key code of the space bar.
inline constexpr std::uint32_t spaceKeyCode = 49;

struct EventHotKeyID {
    std::uint32_t signature = 0;
    std::uint32_t id = 0;
};

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

/// A handler: the next handler (not used), the event, and what was given as user data. Called on
/// the main thread. It answers noErr, or eventNotHandledErr to pass the event on.
using EventHandlerProc = OSStatus (*)(EventHandlerCall* next, Event* event, void* userData);

/// System-wide hotkeys. Main thread only.
///
/// A registered combination reports one press event per key press of the user, however long the key
/// is held down and however often the keyboard repeats it meanwhile, and one release event when
/// the combination ends, whichever of its keys goes up first. Lock keys do not matter.
class EventManager {
  public:
    virtual ~EventManager() = default;

    /// The target on which hotkeys report.
    virtual EventTarget* applicationEventTarget() = 0;

    /// Installs `handler` for the listed kinds of events and writes its handle to `outRef`. The
    /// user data is passed to every call as it is. Once removed, the handler is not called again.
    virtual OSStatus installEventHandler(EventTarget* target, EventHandlerProc handler,
                                         std::span<const EventTypeSpec> types, void* userData,
                                         EventHandlerRef* outRef) = 0;
    virtual OSStatus removeEventHandler(EventHandlerRef handler) = 0;

    /// Registers a key with exactly these modifiers (shiftKeyMask, optionKeyMask) under `id` and
    /// writes its handle to `outRef`; a combination that another program holds is
    /// eventHotKeyExistsErr.
    virtual OSStatus registerEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                         EventHotKeyID id, EventTarget* target,
                                         std::uint32_t options, EventHotKeyRef* outRef) = 0;
    virtual OSStatus unregisterEventHotKey(EventHotKeyRef hotKey) = 0;

    /// The kind of an event that is being handled.
    virtual std::uint32_t eventKind(Event* event) = 0;
    /// Reads the hotkey identifier that an event carries as its parameter `name` of type `type`.
    virtual OSStatus eventParameter(Event* event, std::uint32_t name, std::uint32_t type,
                                    EventHotKeyID* outId) = 0;
};

}  // namespace tarvik::platform
