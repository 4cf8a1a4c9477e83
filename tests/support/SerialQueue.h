#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace tarvik::simulated {

/// A queue whose blocks run one at a time on whichever thread the test runs them. Any thread.
class SerialQueue {
  public:
    void submit(std::function<void()> block);
    /// Puts `block` before those that wait.
    void submitFirst(std::function<void()> block);
    /// Runs one block; false when none waits or one is running already.
    bool runOne();
    /// Runs blocks until none waits.
    void runAll();

    bool isEmpty() const;
    /// True while a block of this queue runs on the calling thread.
    bool isCurrent() const;
    /// Destroys what waits without running it.
    void clear();

  private:
    mutable std::mutex mutex_;
    std::deque<std::function<void()>> blocks_;
    bool isRunning_ = false;
    std::thread::id runner_;
};

}  // namespace tarvik::simulated
