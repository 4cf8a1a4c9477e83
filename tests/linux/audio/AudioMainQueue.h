#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>

#include "platform/MainQueue.h"

namespace tarvik::tests {

/// A main queue that runs in real time while the test's own thread lets it.
class AudioMainQueue : public platform::MainQueue {
  public:
    void async(std::function<void()> block) override;
    void asyncAfter(Seconds delay, std::function<void()> block) override;

    /// Runs blocks until `condition`, looked at every few milliseconds, holds or `limit` has
    /// passed; returns whether it holds.
    bool runUntil(const std::function<bool()>& condition, Seconds limit);

  private:
    using RealClock = std::chrono::steady_clock;

    std::function<void()> takeDue(RealClock::time_point until);

    std::mutex mutex_;
    std::condition_variable added_;
    std::multimap<RealClock::time_point, std::function<void()>> blocks_;
};

}  // namespace tarvik::tests
