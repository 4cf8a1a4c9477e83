#include "platform/linux/audio/LoopTimer.h"

#include <utility>

namespace tarvik::linuxdesktop {

void LoopTimer::start(const pa_context* context, Seconds delay, std::function<void()> block) {
    cancel();
    block_ = std::move(block);
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(delay).count();
    event_ = pa_context_rttime_new(context, pa_rtclock_now() + static_cast<pa_usec_t>(microseconds),
                                   &LoopTimer::due, this);
}

void LoopTimer::cancel() {
    block_ = nullptr;
    if (event_ != nullptr) {
        api_->time_free(std::exchange(event_, nullptr));
    }
}

void LoopTimer::due(pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
    auto& timer = *static_cast<LoopTimer*>(self);
    const auto block = std::move(timer.block_);
    timer.cancel();
    // The block may start the timer again or destroy it.
    block();
}

}  // namespace tarvik::linuxdesktop
