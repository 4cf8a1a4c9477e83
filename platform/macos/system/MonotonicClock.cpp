// SPDX-License-Identifier: MIT

#include "platform/macos/system/MonotonicClock.h"

#include <chrono>
#include <ctime>

namespace tarvik::macdesktop {

TimePoint MonotonicClock::now() const {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC_RAW, &time);
    return TimePoint(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

}  // namespace tarvik::macdesktop
