// SPDX-License-Identifier: MIT

#import "platform/macos/system/RunLoopTimerService.h"

#import <Foundation/Foundation.h>

#include <utility>

namespace tarvik::macdesktop {

namespace {

// The run loop holds the NSTimer, and the NSTimer its block, until the NSTimer is invalidated.
class RunLoopTimer final : public platform::Timer {
  public:
    explicit RunLoopTimer(NSTimer* timer) : timer_(timer) {}
    ~RunLoopTimer() override { invalidate(); }

    void invalidate() override { [timer_ invalidate]; }

  private:
    NSTimer* timer_;
};

// By value, because the block may drop the timer and so the timer's own reference. A pool for each
// call: the application's pool is drained by the next event, which may be hours away.
void call(std::shared_ptr<const std::function<void()>> block) {
    @autoreleasepool {
        (*block)();
    }
}

}  // namespace

std::unique_ptr<platform::Timer> RunLoopTimerService::scheduledRepeatingTimer(
    Seconds interval, std::function<void()> block) {
    const auto shared = std::make_shared<const std::function<void()>>(std::move(block));
    NSTimer* timer = [NSTimer scheduledTimerWithTimeInterval:interval.count()
                                                     repeats:YES
                                                       block:^(NSTimer*) {
                                                         call(shared);
                                                       }];
    return std::make_unique<RunLoopTimer>(timer);
}

}  // namespace tarvik::macdesktop
