#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Clock.h"
#include "platform/linux/bus/BusConnection.h"

namespace tarvik::linuxdesktop {

/// The desktop's file manager, by its name on the session bus. Main thread only; nothing waits.
class FileManager {
  public:
    /// `clock` outlives the object.
    explicit FileManager(const platform::Clock& clock) : clock_(clock) {}

    /// Has the file at `path` (absolute) shown in its folder, selected; starts the file manager
    /// where that is needed. `onFailure` is called when none does it within ten seconds.
    void show(const std::string& path, std::function<void()> onFailure);

  private:
    const platform::Clock& clock_;
    /// Joined when it is needed, and again when it was lost.
    std::unique_ptr<BusConnection> sessionBus_;
    bool isLost_ = false;
};

}  // namespace tarvik::linuxdesktop
