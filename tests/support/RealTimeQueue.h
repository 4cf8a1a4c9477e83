// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "platform/MainQueue.h"

namespace tarvik::tests {

/// A main queue in real time. The test's thread runs the blocks while it waits for a condition.
class RealTimeQueue final : public platform::MainQueue {
  public:
    void async(std::function<void()> block) override;
    void asyncAfter(Seconds delay, std::function<void()> block) override;

    /// Runs blocks until `condition` holds; false when `timeout` has passed before that. The
    /// condition is checked every few milliseconds, and less often when a check takes long.
    bool runUntil(const std::function<bool()>& condition,
                  std::chrono::milliseconds timeout = std::chrono::seconds(10));
    /// Runs blocks for `interval`, for a test that nothing happens.
    void runFor(std::chrono::milliseconds interval);

  private:
    using SteadyTimePoint = std::chrono::steady_clock::time_point;

    void runDue(SteadyTimePoint deadline);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::multimap<SteadyTimePoint, std::function<void()>> blocks_;
};

}  // namespace tarvik::tests
