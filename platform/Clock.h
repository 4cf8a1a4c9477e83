#pragma once

#include "base/Time.h"

namespace tarvik::platform {

/// Tells points in time. They never go backwards while the process lives.
class Clock {
  public:
    virtual ~Clock() = default;

    /// The present moment. Any thread.
    virtual TimePoint now() const = 0;
};

}  // namespace tarvik::platform
