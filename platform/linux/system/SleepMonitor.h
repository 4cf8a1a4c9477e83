#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/loop/Alarm.h"
#include "platform/linux/system/SocketWatch.h"

namespace tarvik::linuxdesktop {

/// Tells when the machine has woken from sleep, as logind announces it. Main thread only.
///
/// A system bus that goes away costs one line in the log and is joined again when its socket is
/// back; a few attempts follow each change around the socket, because it appears before anybody
/// listens at it. While nothing changes, nothing wakes up.
class SleepMonitor {
  public:
    /// Calls `onWake` on the main thread after each sleep. Without a system bus it never does, and
    /// the log gets one line. `clock` and `log` outlive the object.
    SleepMonitor(const platform::Clock& clock, platform::Log& log, std::function<void()> onWake);

  private:
    void connect();
    void joined();
    void lost(const Error& error);
    void awaitBus();

    const platform::Clock& clock_;
    platform::Log& log_;
    std::function<void()> onWake_;
    bool isLossKnown_ = false;
    int attempts_ = 0;
    std::optional<SocketWatch> socket_;
    Alarm retry_;
    std::unique_ptr<BusConnection> systemBus_;
};

}  // namespace tarvik::linuxdesktop
