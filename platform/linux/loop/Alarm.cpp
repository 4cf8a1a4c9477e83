// SPDX-License-Identifier: MIT

#include "platform/linux/loop/Alarm.h"

#include <sys/timerfd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "platform/linux/loop/MonotonicClock.h"

namespace tarvik::linuxdesktop {

namespace {

// The kernel refuses what does not fit its counter; nothing waits for a century.
constexpr double maxSeconds = 3.0e9;

FileDescriptor makeTimer() {
    FileDescriptor timer(timerfd_create(MonotonicClock::identifier, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!timer) {
        // Without a timer there is no main loop to report anything on.
        std::abort();
    }
    return timer;
}

}  // namespace

Alarm::Alarm(std::function<void()> handler)
    : timer_(makeTimer()), notifier_(timer_.number(), QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_,
                     [handler = std::move(handler)] { handler(); });
}

void Alarm::set(TimePoint time) {
    const double seconds = std::clamp(time.time_since_epoch().count(), 0.0, maxSeconds);
    const double whole = std::floor(seconds);
    itimerspec setting{};
    setting.it_value.tv_sec = static_cast<time_t>(whole);
    // Rounded up, never to zero: an early alarm would spin until its time, and zero means off.
    setting.it_value.tv_nsec =
        std::clamp(static_cast<long>(std::ceil((seconds - whole) * 1e9)), 1L, 999'999'999L);
    timerfd_settime(timer_.number(), TFD_TIMER_ABSTIME, &setting, nullptr);
}

void Alarm::clear() {
    const itimerspec off{};
    timerfd_settime(timer_.number(), 0, &off, nullptr);
}

}  // namespace tarvik::linuxdesktop
