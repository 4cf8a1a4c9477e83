#pragma once

#include <QSocketNotifier>
#include <functional>

#include "base/Time.h"
#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

/// Calls a handler on the main thread's loop at a moment of MonotonicClock.
///
/// It is a kernel timer, so any thread can set it, it is exact to microseconds, and it costs
/// nothing while it waits. Made and destroyed on the main thread.
class Alarm {
  public:
    /// `handler` runs on the main thread, also in nested loops.
    explicit Alarm(std::function<void()> handler);
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

    /// Calls the handler from `moment` on, again and again in every turn of the loop until the
    /// alarm is set anew or cleared. A moment that has passed means the next turn. Any thread;
    /// never blocks.
    void set(TimePoint moment);
    /// Stops calling the handler. Any thread; never blocks.
    void clear();

  private:
    FileDescriptor timer_;
    QSocketNotifier notifier_;
};

}  // namespace tarvik::linuxdesktop
