#pragma once

#include "platform/Clock.h"

namespace tarvik::macdesktop {

/// The system's monotonic clock, which also counts while the machine sleeps, as the system's manual
/// says of it.
class MonotonicClock final : public platform::Clock {
  public:
    TimePoint now() const override;
};

}  // namespace tarvik::macdesktop
