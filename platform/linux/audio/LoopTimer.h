#pragma once

#include <pulse/pulseaudio.h>

#include <functional>

#include "base/Time.h"

namespace tarvik::linuxdesktop {

/// Calls a block once on the audio loop's thread. Loop locked, or its thread, for every operation.
class LoopTimer {
  public:
    /// `api` is the loop that calls; it outlives the timer.
    explicit LoopTimer(pa_mainloop_api* api) : api_(api) {}
    ~LoopTimer() { cancel(); }
    LoopTimer(const LoopTimer&) = delete;
    LoopTimer& operator=(const LoopTimer&) = delete;

    /// Calls `block` once `delay` has passed; a block set earlier is dropped. `context` lends its
    /// clock only: it may be in any state and may go away before the timer is due.
    void start(const pa_context* context, Seconds delay, std::function<void()> block);
    void cancel();

  private:
    static void due(pa_mainloop_api* api, pa_time_event* event, const timeval* when, void* self);

    pa_mainloop_api* api_;
    pa_time_event* event_ = nullptr;
    std::function<void()> block_;
};

}  // namespace tarvik::linuxdesktop
