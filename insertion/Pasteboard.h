#pragma once

#include <optional>
#include <string_view>

#include "platform/KeyboardEvents.h"

namespace tarvik {

/// Types text into other programs. It never touches the clipboard, its name notwithstanding.
class Pasteboard {
  public:
    Pasteboard() = delete;

    /// Types `text` (UTF-8) into the process `toPid`, or into whatever has the keyboard when there
    /// is none, as key presses that carry at most 20 UTF-16 units each; a surrogate pair may be
    /// divided between two presses. A press that the system refuses to make is skipped. Main
    /// thread.
    static void typeString(std::string_view text, std::optional<platform::ProcessIdentifier> toPid,
                           platform::KeyboardEvents& keyboard);
};

}  // namespace tarvik
