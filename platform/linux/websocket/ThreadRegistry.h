// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace tarvik::linuxdesktop {

/// Starts threads and joins them, so that no thread has to join itself.
class ThreadRegistry {
  public:
    /// Runs `body` on a new thread and joins the threads that have ended. Does nothing after
    /// joinAll(). Any thread.
    void start(std::function<void()> body);
    /// Waits for all threads, whose bodies must be about to return. Not on one of the threads.
    void joinAll();

  private:
    struct Entry {
        std::thread thread;
        std::shared_ptr<std::atomic<bool>> hasEnded;
    };

    std::mutex mutex_;
    bool isClosed_ = false;
    std::list<Entry> entries_;
};

}  // namespace tarvik::linuxdesktop
