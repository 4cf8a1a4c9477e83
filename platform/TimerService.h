// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "base/Time.h"

namespace tarvik::platform {

/// The handle of a running timer. Dropping the handle stops the timer. Main thread only.
class Timer {
  public:
    virtual ~Timer() = default;

    /// Stops the timer for good: the block is not called again. Allowed any number of times. Both
    /// this call and dropping the handle are allowed inside the block.
    virtual void invalidate() = 0;
};

/// Makes timers that fire on the main thread's loop. Main thread only.
class TimerService {
  public:
    virtual ~TimerService() = default;

    /// Calls `block` on the main thread every `interval`, for the first time after one interval. A
    /// tick never comes early. Ticks that a busy main thread misses are skipped.
    [[nodiscard]] virtual std::unique_ptr<Timer> scheduledRepeatingTimer(
        Seconds interval, std::function<void()> block) = 0;
};

}  // namespace tarvik::platform
