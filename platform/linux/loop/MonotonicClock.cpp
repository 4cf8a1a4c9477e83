#include "platform/linux/loop/MonotonicClock.h"

#include <chrono>

namespace tarvik::linuxdesktop {

TimePoint MonotonicClock::now() const {
    timespec moment{};
    clock_gettime(identifier, &moment);
    return TimePoint(std::chrono::seconds(moment.tv_sec) +
                     std::chrono::nanoseconds(moment.tv_nsec));
}

}  // namespace tarvik::linuxdesktop
