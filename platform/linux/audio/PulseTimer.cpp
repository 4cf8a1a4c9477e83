// SPDX-License-Identifier: MIT

#include "platform/linux/audio/PulseTimer.h"

#include <utility>

namespace tarvik::linuxdesktop {

void PulseTimer::start(const pa_context* context, Seconds delay, std::function<void()> onDue) {
    cancel();
    onDue_ = std::move(onDue);
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(delay).count();
    event_ = pa_context_rttime_new(context, pa_rtclock_now() + static_cast<pa_usec_t>(microseconds),
                                   &PulseTimer::timeReached, this);
}

void PulseTimer::cancel() {
    onDue_ = nullptr;
    if (event_ != nullptr) {
        api_->time_free(std::exchange(event_, nullptr));
    }
}

void PulseTimer::timeReached(pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
    auto& timer = *static_cast<PulseTimer*>(self);
    const auto onDue = std::move(timer.onDue_);
    timer.cancel();
    onDue();
}

}  // namespace tarvik::linuxdesktop
