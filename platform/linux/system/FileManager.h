#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Clock.h"
#include "platform/linux/bus/BusConnection.h"

namespace tarvik::linuxdesktop {

/// The desktop's file manager, org.freedesktop.FileManager1 on the session bus. Main thread only;
/// nothing waits.
class FileManager {
  public:
    /// `clock` outlives the object.
    explicit FileManager(const platform::Clock& clock) : clock_(clock) {}

    /// Shows the file at `path` (absolute) in its folder, selected. The bus starts the file manager
    /// if necessary. Calls `onFailure` when no file manager has done so within ten seconds.
    void show(const std::string& path, std::function<void()> onFailure);

  private:
    const platform::Clock& clock_;
    /// Opened by the first request, and again by the next request after a loss.
    std::unique_ptr<BusConnection> sessionBus_;
    bool isLost_ = false;
};

}  // namespace tarvik::linuxdesktop
