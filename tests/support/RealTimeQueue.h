#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "platform/MainQueue.h"

namespace tarvik::tests {

/// A main queue that the thread of a test runs while it waits for something.
class RealTimeQueue final : public platform::MainQueue {
  public:
    void async(std::function<void()> block) override;
    void asyncAfter(Seconds delay, std::function<void()> block) override;

    /// Runs blocks until `condition`, looked at every few milliseconds, holds; false when that
    /// takes longer than `deadline`.
    bool runUntil(const std::function<bool()>& condition,
                  std::chrono::milliseconds deadline = std::chrono::seconds(10));
    /// Runs blocks for that long, to see that nothing comes.
    void runFor(std::chrono::milliseconds interval);

  private:
    using Moment = std::chrono::steady_clock::time_point;

    void runDue(Moment lookAgain);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::multimap<Moment, std::function<void()>> blocks_;
};

}  // namespace tarvik::tests
