// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace tarvik::simulated {

/// A queue that runs its blocks one at a time, on the thread on which a test calls runOne() or
/// runAll(). Any thread.
class SerialQueue {
  public:
    /// Adds `block` at the end.
    void submit(std::function<void()> block);
    /// Adds `block` before all waiting blocks.
    void submitFirst(std::function<void()> block);
    /// Runs one block; false when no block waits or another block is running.
    bool runOne();
    /// Runs blocks until none waits.
    void runAll();

    bool isEmpty() const;
    /// Whether a block of this queue is running on the calling thread.
    bool isCurrent() const;
    /// Destroys the waiting blocks without running them.
    void clear();

  private:
    mutable std::mutex mutex_;
    std::deque<std::function<void()>> blocks_;
    bool isRunning_ = false;
    std::thread::id runner_;
};

}  // namespace tarvik::simulated
