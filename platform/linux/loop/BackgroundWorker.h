#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/Time.h"

namespace tarvik::linuxdesktop {

/// A thread that runs jobs one after the other, in the order in which they were submitted. It is
/// for what may wait for a disk or another program; while there are no jobs it sleeps.
class BackgroundWorker {
  public:
    /// `name` is what a process list shows (15 bytes at most).
    BackgroundWorker(const std::string& name, Seconds patience);
    /// As finish().
    ~BackgroundWorker();
    BackgroundWorker(const BackgroundWorker&) = delete;
    BackgroundWorker& operator=(const BackgroundWorker&) = delete;

    /// Runs `job` on the worker's thread. Any thread; never blocks.
    void async(std::function<void()> job);
    /// Waits for the jobs that are left, but no longer than `patience`; a job that takes longer is
    /// left behind with its thread, so a job holds whatever it uses. Jobs submitted later are not
    /// run. The thread that made the worker.
    void finish();

  private:
    struct Jobs;

    std::shared_ptr<Jobs> jobs_;
    Seconds patience_;
};

}  // namespace tarvik::linuxdesktop
