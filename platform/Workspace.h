// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace tarvik::platform {

/// A process identifier as accessibility and keyboard events know it.
using ProcessIdentifier = std::int32_t;

/// An application that was running when this object was made. Immutable. Any thread.
class RunningApplication {
  public:
    explicit RunningApplication(ProcessIdentifier processIdentifier)
        : processIdentifier_(processIdentifier) {}

    ProcessIdentifier processIdentifier() const { return processIdentifier_; }

  private:
    ProcessIdentifier processIdentifier_;
};

/// The desktop around the application. Main thread only; no call waits for another process.
class Workspace {
  public:
    virtual ~Workspace() = default;

    /// The application whose window has the keyboard focus. Empty when there is none, or when its
    /// process is unknown.
    virtual std::shared_ptr<RunningApplication> frontmostApplication() = 0;

    /// Calls `handler` on the main thread each time the machine has woken from sleep, as long as
    /// the workspace exists.
    virtual void observeDidWake(std::function<void()> handler) = 0;

    /// Opens a link in the program that the desktop uses for it, without waiting. Returns false and
    /// logs the reason when the link cannot be opened at all.
    virtual bool openUrl(const std::string& url) = 0;

    /// Shows and selects the file at `path` (absolute) in the file manager, without waiting.
    virtual void activateFileViewerSelecting(const std::string& path) = 0;
};

}  // namespace tarvik::platform
