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
    /// when the process is not known. Answers what was noticed last, without asking anybody. Any
    /// thread.
    virtual std::optional<platform::ProcessIdentifier> frontmostProcess() const = 0;

    /// The same, for a recording that begins. A means that also types remembers the window until
    /// the next call: text for this process goes there, while the window exists. Of a window whose
    /// process is not known, the same may hold for text without a process. Main thread.
    virtual std::optional<platform::ProcessIdentifier> chooseTarget() { return frontmostProcess(); }

    /// Whether text for `process`, which chooseTarget() has answered, belongs or may belong to
    /// another process: the means was asked before it knew, and the means that types knows better.
    /// Main thread.
    virtual bool isElsewhere(platform::ProcessIdentifier /*process*/) const { return false; }

    /// Whether frontmostProcess() follows what programs report over the accessibility bus, as far
    /// as the reports hold. Where it is empty then, no report holds. Any thread.
    virtual bool followsReports() const { return false; }
};

}  // namespace tarvik::linuxdesktop
