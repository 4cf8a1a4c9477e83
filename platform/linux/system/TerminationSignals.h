// SPDX-License-Identifier: MIT
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread's loop, and ignores SIGPIPE.
/// Main thread only; at most one object at a time.
///
/// Each signal is caught once: the same signal again ends a process that hangs. A signal that was
/// ignored when the process started, as under nohup, stays ignored.
class TerminationSignals {
  public:
    /// Calls `onSignal` in a turn of the main thread's loop.
    explicit TerminationSignals(std::function<void()> onSignal);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

  private:
    FileDescriptor arrivals_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace tarvik::linuxdesktop
