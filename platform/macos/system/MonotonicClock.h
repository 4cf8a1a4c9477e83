// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Clock.h"

namespace tarvik::macdesktop {

/// The system's monotonic clock. According to the system's manual, the clock also counts while the
/// machine sleeps.
class MonotonicClock final : public platform::Clock {
  public:
    TimePoint now() const override;
};

}  // namespace tarvik::macdesktop
