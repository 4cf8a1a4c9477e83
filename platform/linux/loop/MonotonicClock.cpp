// SPDX-License-Identifier: MIT

#include "platform/linux/loop/MonotonicClock.h"

#include <chrono>

namespace tarvik::linuxdesktop {

TimePoint MonotonicClock::now() const {
    timespec time{};
    clock_gettime(identifier, &time);
    return TimePoint(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

}  // namespace tarvik::linuxdesktop
