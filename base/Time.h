// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

namespace tarvik {

/// A duration in seconds, fractions included.
using Seconds = std::chrono::duration<double>;

/// The clock of all time points. Only platform::Clock reads the clock, so this type has no now().
struct PlatformClock {
    using duration = Seconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<PlatformClock>;
    static constexpr bool is_steady = true;
};

using TimePoint = PlatformClock::time_point;

}  // namespace tarvik
