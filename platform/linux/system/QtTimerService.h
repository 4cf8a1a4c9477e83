#pragma once

#include "platform/Clock.h"
#include "platform/TimerService.h"

namespace tarvik::linuxdesktop {

/// Timers on Qt's event loop. The thread that uses it has its QCoreApplication by then.
///
/// Ticks stay on the grid that begins when the timer is made. A timer does not tick again while its
/// block still runs, not even in a nested loop that the block has started.
class QtTimerService final : public platform::TimerService {
  public:
    /// `clock` outlives the service and its timers.
    explicit QtTimerService(const platform::Clock& clock) : clock_(clock) {}

    [[nodiscard]] std::unique_ptr<platform::Timer> scheduledRepeatingTimer(
        Seconds interval, std::function<void()> block) override;

  private:
    const platform::Clock& clock_;
};

}  // namespace tarvik::linuxdesktop
