// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/Workspace.h"

namespace tarvik::platform {

/// The state of keys and modifiers that synthesised events start from.
class EventSource {
  public:
    virtual ~EventSource() = default;
};

/// One synthesised key event.
class KeyboardEvent {
  public:
    virtual ~KeyboardEvent() = default;
};

/// The source state that combines all input of the session.
inline constexpr int eventSourceStateCombinedSession = 0;
/// The event tap at the point where hardware events enter the system.
inline constexpr int hidEventTap = 0;

/// Synthesised keyboard input. Main thread only. Posting never waits. Events take effect in the
/// order in which they were posted.
///
/// A key-down event types the Unicode text attached to the event, not the character of its key. The
/// key-up event after it types nothing. The typed text does not depend on the keyboard layout, on
/// Caps Lock or on modifiers that the user holds, and never acts as a shortcut.
///
/// The two halves of a surrogate pair may be in successive events. Linux joins them to one
/// character. macOS posts every event as it is, and the program that reads the events decides.
///
/// Control characters: accessibility inserts exactly what was said. Typing on Linux makes a line
/// break or a tab one blank and drops the others, because Return sends and Tab leaves. macOS posts
/// them as they are.
class KeyboardEvents {
  public:
    virtual ~KeyboardEvents() = default;

    /// Makes an event source; empty when the system refuses.
    virtual std::shared_ptr<EventSource> createSource(int sourceState) = 0;

    /// Makes a key-down or key-up event of a virtual key; empty when the system refuses.
    virtual std::shared_ptr<KeyboardEvent> createKeyboardEvent(
        const std::shared_ptr<EventSource>& source, std::uint16_t virtualKey, bool keyDown) = 0;

    /// Attaches text (20 UTF-16 units at most) to an event.
    virtual void setUnicodeString(KeyboardEvent& event, std::u16string_view units) = 0;

    /// Delivers the event to the given process, even when another process has the keyboard focus.
    /// An event that cannot be delivered is dropped; it never reaches another process. Linux
    /// reports the loss in the log. macOS reports no loss, and a process behind others may lose
    /// events.
    virtual void postToPid(ProcessIdentifier processIdentifier,
                           const std::shared_ptr<KeyboardEvent>& event) = 0;
    /// Delivers the event to the process that has the keyboard focus.
    virtual void post(int tap, const std::shared_ptr<KeyboardEvent>& event) = 0;
};

}  // namespace tarvik::platform
