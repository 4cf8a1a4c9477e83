#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread's loop, and has SIGPIPE ignored.
/// At most one object at a time; main thread.
///
/// Each signal is taken once: the same signal again ends a process that hangs. One that was ignored
/// when the process started, as nohup arranges it, stays ignored.
class TerminationSignals {
  public:
    explicit TerminationSignals(std::function<void()> handler);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

  private:
    FileDescriptor arrivals_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace tarvik::linuxdesktop
