// SPDX-License-Identifier: MIT
#pragma once

#include <ctime>

#include "platform/Clock.h"

namespace tarvik::linuxdesktop {

/// The time since the machine was started.
///
/// The clock goes on while the machine sleeps. A recording that a suspend cuts in two counts with
/// the time that has really passed, also where nothing announces the wake-up.
class MonotonicClock final : public platform::Clock {
  public:
    static constexpr clockid_t identifier = CLOCK_BOOTTIME;

    TimePoint now() const override;
};

}  // namespace tarvik::linuxdesktop
