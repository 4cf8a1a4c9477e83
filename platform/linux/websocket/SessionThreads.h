#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace tarvik::linuxdesktop {

/// Threads that end by themselves and are joined here, so that none has to join itself.
class SessionThreads {
  public:
    /// Runs `body` on a new thread and joins those that have ended; does nothing after joinAll().
    /// Any thread but one whose body still runs and is being joined.
    void start(std::function<void()> body);
    /// Waits for all threads; their bodies must be about to end. Not on one of them.
    void joinAll();

  private:
    struct Running {
        std::thread thread;
        std::shared_ptr<std::atomic<bool>> hasEnded;
    };

    std::mutex mutex_;
    bool isClosed_ = false;
    std::list<Running> threads_;
};

}  // namespace tarvik::linuxdesktop
