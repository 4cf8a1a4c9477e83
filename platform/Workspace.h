#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace tarvik::platform {

/// A process identifier as accessibility and keyboard events know it.
using ProcessIdentifier = std::int32_t;

/// An application that was running when the object was made. Immutable; any thread.
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

    /// The application whose window has the keyboard; empty when there is none or its process is
    /// not known.
    virtual std::shared_ptr<RunningApplication> frontmostApplication() = 0;

    /// Calls `handler` on the main thread each time the machine has woken from sleep, for as long
    /// as the workspace exists.
    virtual void observeDidWake(std::function<void()> handler) = 0;

    /// Opens a link with whatever the desktop uses for it, in the background. False, and the reason
    /// in the log, when the link cannot be opened at all.
    virtual bool openUrl(const std::string& url) = 0;

    /// Shows the file at `path` (absolute) in the file manager, selected, in the background.
    virtual void activateFileViewerSelecting(const std::string& path) = 0;
};

}  // namespace tarvik::platform
