// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

#include "platform/KeyboardEvents.h"

namespace tarvik {

/// Types text into other programs. Despite its name this class never touches the clipboard.
class Pasteboard {
  public:
    Pasteboard() = delete;

    /// Types `text` (UTF-8) into the process `toPid`, or without one into the process that has the
    /// keyboard focus.
    ///
    /// Each key press carries up to 20 UTF-16 units. The two halves of a surrogate pair may be in
    /// different presses. A press whose events the system refuses to make is skipped. Main thread.
    static void typeString(std::string_view text, std::optional<platform::ProcessIdentifier> toPid,
                           platform::KeyboardEvents& keyboard);
};

}  // namespace tarvik
