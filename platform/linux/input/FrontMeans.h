// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "platform/Workspace.h"

namespace tarvik::linuxdesktop {

/// One way to know which process has the keyboard.
class FrontMeans {
  public:
    virtual ~FrontMeans() = default;

    /// The process whose window has the keyboard, this one included. Empty when there is none, or
    /// when the process is not known. Answers what was noticed last, without asking anybody. A
    /// means that also types remembers the window: text for this process goes there. Any thread.
    virtual std::optional<platform::ProcessIdentifier> frontmostProcess() const = 0;
};

}  // namespace tarvik::linuxdesktop
