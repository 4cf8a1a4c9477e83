// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "base/Time.h"
#include "platform/Clock.h"
#include "platform/MainQueue.h"
#include "platform/TimerService.h"

namespace tarvik::tests {

/// The main loop of one platform, which needs no screen. The thread of the test is the main thread.
class LoopWorld {
  public:
    virtual ~LoopWorld() = default;

    virtual platform::MainQueue& mainQueue() = 0;
    virtual platform::TimerService& timers() = 0;
    virtual const platform::Clock& clock() = 0;

    /// Runs the main loop until `condition` holds; false when that takes more than ten seconds.
    virtual bool runUntil(const std::function<bool()>& condition) = 0;
    /// Keeps the main thread busy without running its loop.
    virtual void stall(Seconds interval) = 0;
};

using LoopWorldMaker = std::unique_ptr<LoopWorld> (*)();

std::unique_ptr<LoopWorld> makeSimulatedLoopWorld();
/// The main loop of the backend for which the program is built.
std::unique_ptr<LoopWorld> makeRealLoopWorld();

}  // namespace tarvik::tests
