#pragma once

#include <functional>
#include <memory>

#include "base/Time.h"

namespace tarvik::platform {

/// A timer that is running. Dropping it invalidates it. Main thread only.
class Timer {
  public:
    virtual ~Timer() = default;

    /// Stops the timer for good; its block is not called again. Allowed inside the block, and any
    /// number of times; so is dropping the timer.
    virtual void invalidate() = 0;
};

/// Makes timers that fire on the main thread's loop. Main thread only.
class TimerService {
  public:
    virtual ~TimerService() = default;

    /// Calls `block` on the main thread every `interval`, first after one interval. A tick never
    /// comes early; ticks that a busy main thread missed are skipped, not made up for.
    [[nodiscard]] virtual std::unique_ptr<Timer> scheduledRepeatingTimer(
        Seconds interval, std::function<void()> block) = 0;
};

}  // namespace tarvik::platform
