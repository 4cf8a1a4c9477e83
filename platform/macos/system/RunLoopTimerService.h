// SPDX-License-Identifier: MIT
#pragma once

#include "platform/TimerService.h"

namespace tarvik::macdesktop {

/// Timers as NSTimers of the main run loop, in its default mode: no timer ticks while a menu is
/// open or an alert waits.
class RunLoopTimerService final : public platform::TimerService {
  public:
    [[nodiscard]] std::unique_ptr<platform::Timer> scheduledRepeatingTimer(
        Seconds interval, std::function<void()> block) override;
};

}  // namespace tarvik::macdesktop
