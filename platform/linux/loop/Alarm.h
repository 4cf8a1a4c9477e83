// SPDX-License-Identifier: MIT
#pragma once

#include <QSocketNotifier>
#include <functional>

#include "base/Time.h"
#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

/// Calls a handler on the main thread's loop at a time of MonotonicClock.
///
/// The alarm is a kernel timer: any thread can set it, it is exact to microseconds, and it costs
/// nothing while it waits. Made and destroyed on the main thread.
class Alarm {
  public:
    /// `handler` runs on the main thread, also in nested loops.
    explicit Alarm(std::function<void()> handler);
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

    /// Calls the handler from `time` on, in every turn of the loop, until the alarm is set anew or
    /// cleared. A time that has passed means the next turn. Any thread; never blocks.
    void set(TimePoint time);
    /// Stops calling the handler. Any thread; never blocks.
    void clear();

  private:
    FileDescriptor timer_;
    QSocketNotifier notifier_;
};

}  // namespace tarvik::linuxdesktop
