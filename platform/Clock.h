// SPDX-License-Identifier: MIT
#pragma once

#include "base/Time.h"

namespace tarvik::platform {

/// The source of all time points. Time never goes backwards while the process lives.
class Clock {
  public:
    virtual ~Clock() = default;

    /// The current time. Any thread.
    virtual TimePoint now() const = 0;
};

}  // namespace tarvik::platform
