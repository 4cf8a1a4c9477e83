#pragma once

#include <ctime>

#include "platform/Clock.h"

namespace tarvik::linuxdesktop {

/// The time since the machine was started.
///
/// It goes on while the machine sleeps, so that a recording that a suspend cut in two counts as the
/// time that has really passed, also where nothing tells of the waking.
class MonotonicClock final : public platform::Clock {
  public:
    static constexpr clockid_t identifier = CLOCK_BOOTTIME;

    TimePoint now() const override;
};

}  // namespace tarvik::linuxdesktop
