// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "platform/Clock.h"
#include "platform/TimerService.h"

namespace tarvik::linuxdesktop {

/// Timers on Qt's event loop. Main thread only; needs its QCoreApplication.
///
/// Ticks are due at multiples of the interval after the timer was made. A timer does not tick while
/// its block runs, not even in a nested loop of the block. All timers share one alarm, so that a
/// process without a free descriptor can still start one.
class QtTimerService final : public platform::TimerService {
  public:
    /// `clock` outlives the service and its timers.
    explicit QtTimerService(const platform::Clock& clock);

    [[nodiscard]] std::unique_ptr<platform::Timer> scheduledRepeatingTimer(
        Seconds interval, std::function<void()> block) override;

  private:
    struct Ticker;
    class Schedule;
    class RunningTimer;

    const std::shared_ptr<Schedule> schedule_;
};

}  // namespace tarvik::linuxdesktop
