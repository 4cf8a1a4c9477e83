// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/Workspace.h"

namespace tarvik::linuxdesktop {

/// Text to be typed, and for whom.
struct TypedText {
    /// The process that gets the text; without one, whatever has the keyboard gets it.
    std::optional<platform::ProcessIdentifier> process;
    /// One or more; no control characters.
    std::u32string characters;
};

/// Hears which modifiers typing lifts, a mask of the event manager, before the lift. On a thread of
/// the typing means; never blocks.
using OnLift = std::function<void(std::uint32_t modifiers)>;

/// One way to type Unicode text into other programs. Main thread only, unless a line says
/// otherwise.
///
/// A means types into the process it was told or nowhere. What the user holds, locks or has as
/// keyboard layout does not change the text. A modifier that the user holds may be lifted; it is
/// never pressed again, since the user may have let go by then.
class TypingMeans {
  public:
    /// Text that was taken before is typed first, as far as its targets take it within 0.8 s.
    virtual ~TypingMeans() = default;

    /// Whether text can be typed at present. Any thread.
    virtual bool isAvailable() const = 0;
    /// Whether text also reaches the X programs of a Wayland session, and no other way is better.
    /// Any thread.
    virtual bool servesXPrograms() const { return true; }

    /// Types `text` after every text before it. Never waits; text that cannot be delivered is one
    /// line in the log, with the number of characters. `onDone` is called once, on the main thread,
    /// in a later turn: the text has been read by its target, or is lost. It may be empty.
    virtual void type(TypedText text, std::function<void()> onDone) = 0;
};

}  // namespace tarvik::linuxdesktop
