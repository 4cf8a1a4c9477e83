#include "platform/macos/system/MonotonicClock.h"

#include <chrono>
#include <ctime>

namespace tarvik::macdesktop {

TimePoint MonotonicClock::now() const {
    timespec moment{};
    clock_gettime(CLOCK_MONOTONIC_RAW, &moment);
    return TimePoint(std::chrono::seconds(moment.tv_sec) +
                     std::chrono::nanoseconds(moment.tv_nsec));
}

}  // namespace tarvik::macdesktop
