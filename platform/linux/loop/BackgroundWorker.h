// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Error.h"
#include "base/Time.h"

namespace tarvik::linuxdesktop {

/// A thread that runs jobs one after the other, in the order of submission. A job may wait for a
/// disk or another program. The thread sleeps while there are no jobs.
///
/// When the system has no thread left, jobs run inside async() instead: late is better than lost.
class BackgroundWorker {
  public:
    /// Starts the thread. `name` is what a process list shows (15 bytes at most); `timeout` is how
    /// long finish() waits at the most.
    BackgroundWorker(const std::string& name, Seconds timeout);
    /// As finish().
    ~BackgroundWorker();
    BackgroundWorker(const BackgroundWorker&) = delete;
    BackgroundWorker& operator=(const BackgroundWorker&) = delete;

    /// Why there is no thread; empty when there is one.
    const std::optional<Error>& error() const { return error_; }

    /// Runs `job` on the worker's thread. Any thread; never blocks. Without a thread, the job runs
    /// inside this call, or inside the same call on another thread that is under way.
    void async(std::function<void()> job);
    /// Waits for the jobs that are left, up to the timeout. A job that takes longer is left behind
    /// with its thread, so a job holds whatever it uses. Jobs submitted later do not run. The
    /// thread that made the worker.
    void finish();

  private:
    struct Jobs;

    std::shared_ptr<Jobs> jobs_;
    Seconds timeout_;
    std::optional<Error> error_;
};

}  // namespace tarvik::linuxdesktop
