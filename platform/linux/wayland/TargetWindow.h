// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>

#include "platform/Workspace.h"
#include "platform/linux/wayland/WindowFocus.h"

namespace tarvik::linuxdesktop {

/// The window in front, as the loop's thread tells it, and the window that a recording has chosen.
/// Main thread only, unless a line says otherwise.
class TargetWindow {
  public:
    /// The window in front is another one. Any thread.
    void setFront(WindowFocus::Window front);
    /// As FrontMeans::frontmostProcess(). Any thread.
    std::optional<platform::ProcessIdentifier> frontmostProcess() const;
    /// As FrontMeans::chooseTarget().
    std::optional<platform::ProcessIdentifier> choose();
    /// The chosen window, if it belongs to `process`, or else 0.
    std::int64_t windowFor(std::optional<platform::ProcessIdentifier> process) const;

  private:
    mutable std::mutex mutex_;
    // Under the mutex.
    WindowFocus::Window front_;
    WindowFocus::Window target_;
};

}  // namespace tarvik::linuxdesktop
