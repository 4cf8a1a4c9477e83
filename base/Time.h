#pragma once

#include <chrono>

namespace tarvik {

/// An interval in seconds, fractions included.
using Seconds = std::chrono::duration<double>;

/// The clock that points in time belong to; it is read through platform::Clock only.
struct PlatformClock {
    using duration = Seconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<PlatformClock>;
    static constexpr bool is_steady = true;
};

using TimePoint = PlatformClock::time_point;

}  // namespace tarvik
