#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/Workspace.h"

namespace tarvik::platform {

/// The state of keys and modifiers that events start from.
class EventSource {
  public:
    virtual ~EventSource() = default;
};

/// One synthesised key event.
class KeyboardEvent {
  public:
    virtual ~KeyboardEvent() = default;
};

/// Source state: the combined state of the session.
inline constexpr int eventSourceStateCombinedSession = 0;
/// Event tap: the point where hardware events enter the system.
inline constexpr int hidEventTap = 0;

/// Synthesised keyboard input. Main thread only; posting never waits, and events are carried out in
/// the order in which they were posted.
///
/// A key-down event types the Unicode text attached to it instead of its key's own character, the
/// key-up event that follows types nothing. What is typed does not depend on the keyboard layout,
/// on Caps Lock or on modifiers that the user holds, and never acts as a shortcut. Two halves of a
/// surrogate pair in events that follow each other arrive as one character.
class KeyboardEvents {
  public:
    virtual ~KeyboardEvents() = default;

    /// Empty when the system refuses.
    virtual std::shared_ptr<EventSource> createSource(int sourceState) = 0;

    /// A key-down or key-up event of a virtual key; empty when the system refuses.
    virtual std::shared_ptr<KeyboardEvent> createKeyboardEvent(
        const std::shared_ptr<EventSource>& source, std::uint16_t virtualKey, bool keyDown) = 0;

    /// Attaches text (UTF-16 units, 20 at the most) to an event.
    virtual void setUnicodeString(KeyboardEvent& event, std::u16string_view units) = 0;

    /// Delivers the event to one process, whichever has the keyboard, or to nobody: never to
    /// another process. What could not be delivered is reported in the log.
    virtual void postToPid(ProcessIdentifier processIdentifier,
                           const std::shared_ptr<KeyboardEvent>& event) = 0;
    /// Delivers the event to whatever has the keyboard.
    virtual void post(int tap, const std::shared_ptr<KeyboardEvent>& event) = 0;
};

}  // namespace tarvik::platform
