// SPDX-License-Identifier: MIT
#pragma once

#include <pulse/pulseaudio.h>

#include <functional>

#include "base/Time.h"

namespace tarvik::linuxdesktop {

/// A one-shot timer on the thread of a PulseMainloop. Every operation needs the loop's lock, which
/// that thread holds in every callback.
class PulseTimer {
  public:
    /// `api` is the loop's; the loop outlives the timer.
    explicit PulseTimer(pa_mainloop_api* api) : api_(api) {}
    ~PulseTimer() { cancel(); }
    PulseTimer(const PulseTimer&) = delete;
    PulseTimer& operator=(const PulseTimer&) = delete;

    /// Calls `onDue` on the loop's thread after `delay`. A callback set earlier is dropped. `onDue`
    /// may start the timer again or destroy the timer. `context` only gives access to the loop's
    /// clock: any state will do, and the timer does not keep the pointer.
    void start(const pa_context* context, Seconds delay, std::function<void()> onDue);
    /// Drops the callback. Harmless when none is set.
    void cancel();

  private:
    static void timeReached(pa_mainloop_api* api, pa_time_event* event, const timeval* when,
                            void* self);

    pa_mainloop_api* api_;
    pa_time_event* event_ = nullptr;
    std::function<void()> onDue_;
};

}  // namespace tarvik::linuxdesktop
