#pragma once

#include <functional>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/linux/system/BusConnection.h"

namespace tarvik::linuxdesktop {

/// Tells when the machine has woken from sleep, as logind announces it. Main thread only.
class SleepMonitor {
  public:
    /// Calls `onWake` on the main thread after each sleep. Without a system bus it never does, and
    /// the log gets one line. `clock` and `log` outlive the object.
    SleepMonitor(const platform::Clock& clock, platform::Log& log, std::function<void()> onWake);

  private:
    BusConnection systemBus_;
};

}  // namespace tarvik::linuxdesktop
