// SPDX-License-Identifier: MIT

#include <thread>

#include "platform/macos/system/DispatchMainQueue.h"
#include "platform/macos/system/MonotonicClock.h"
#include "platform/macos/system/RunLoopTimerService.h"
#include "tests/conformance/system/LoopWorld.h"
#import "tests/macos/MainRunLoop.h"

namespace tarvik::tests {

namespace {

class MacLoopWorld final : public LoopWorld {
  public:
    platform::MainQueue& mainQueue() override { return mainQueue_; }
    platform::TimerService& timers() override { return timers_; }
    const platform::Clock& clock() override { return clock_; }

    bool runUntil(const std::function<bool()>& condition) override {
        return runMainLoopUntil(condition, Seconds(10));
    }

    void stall(Seconds interval) override { std::this_thread::sleep_for(interval); }

  private:
    macdesktop::MonotonicClock clock_;
    macdesktop::DispatchMainQueue mainQueue_{clock_};
    macdesktop::RunLoopTimerService timers_;
};

}  // namespace

std::unique_ptr<LoopWorld> makeRealLoopWorld() {
    return std::make_unique<MacLoopWorld>();
}

}  // namespace tarvik::tests
