// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/loop/MainLoop.h"
#include "platform/linux/system/SocketWatch.h"

namespace tarvik::linuxdesktop {

/// Tells when the machine has woken from sleep, as logind announces it. Main thread only.
///
/// A lost system bus costs one line in the log. The monitor joins the bus again when the bus's
/// socket is back. A few attempts follow each change around the socket, because the socket appears
/// before anybody listens at it. While nothing changes, nothing wakes up.
class SleepMonitor {
  public:
    /// Calls `onWake` on the main thread after each sleep. Without a system bus `onWake` is never
    /// called, and the log gets one line. `clock` and `log` outlive the object.
    SleepMonitor(const platform::Clock& clock, platform::Log& log, std::function<void()> onWake);

  private:
    void connect();
    void onObserving();
    void onLost(const Error& error);
    void retry();

    platform::Log& log_;
    std::function<void()> onWake_;
    bool isLossKnown_ = false;
    int attempts_ = 0;
    std::optional<SocketWatch> socket_;
    MainLoop loop_;
    Deadline retryDeadline_{loop_};
    /// Empty while the bus cannot be joined.
    std::unique_ptr<MessageBus> systemBus_;
};

}  // namespace tarvik::linuxdesktop
