// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "platform/Log.h"

namespace tarvik::linuxdesktop {

/// Starts threads and joins them, so that no thread has to join itself.
class ThreadRegistry {
  public:
    /// `log` outlives the registry's last start().
    explicit ThreadRegistry(platform::Log& log) : log_(log) {}

    /// Runs `body` on a new thread and joins the threads that have ended. Does nothing after
    /// joinAll(). False when no thread runs `body`. A series of failures because the system has no
    /// thread left is one line in the log. Any thread.
    bool start(std::function<void()> body);
    /// Reports that the system lacks what a thread needs, as start() reports a lack of threads. Any
    /// thread.
    void reportShortage(const std::error_code& error);
    /// Waits for all threads, whose bodies must be about to return. Not on one of the threads.
    void joinAll();

  private:
    struct Entry {
        std::thread thread;
        std::shared_ptr<std::atomic<bool>> hasEnded;
    };

    void logShortage(const std::error_code& error);

    platform::Log& log_;
    std::mutex mutex_;
    bool isClosed_ = false;
    bool isShortageLogged_ = false;
    std::list<Entry> entries_;
};

}  // namespace tarvik::linuxdesktop
