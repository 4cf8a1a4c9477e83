#import "platform/macos/system/DispatchMainQueue.h"

#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>

#include <utility>

#include "platform/macos/Conversions.h"

namespace tarvik::macdesktop {

namespace {

using Blocks = std::shared_ptr<BlockQueue>;

// Dispatch serves nobody while a block that it called on the main thread has not come back, and a
// block may run the loop of an alert. So Dispatch only hands over, and the run loop calls.
void requestTurn(Blocks blocks);

// The pool is our own: that of the application is emptied by its next event, which may be hours
// away.
void takeTurn(const Blocks& blocks) {
    @autoreleasepool {
        const std::function<void()> block = blocks->takeNext();
        // Before the block runs, for the loop of its alert to go on with.
        if (blocks->isAnyReady()) {
            requestTurn(blocks);
        }
        if (block) {
            block();
        }
    }
}

void requestTurn(Blocks blocks) {
    [NSRunLoop.mainRunLoop performInModes:@[ NSRunLoopCommonModes ]
                                    block:^{
                                      takeTurn(blocks);
                                    }];
}

}  // namespace

DispatchMainQueue::DispatchMainQueue(const platform::Clock& clock)
    : clock_(clock), blocks_(std::make_shared<BlockQueue>()) {}

DispatchMainQueue::~DispatchMainQueue() {
    discardBlocks();
}

void DispatchMainQueue::async(std::function<void()> block) {
    blocks_->append(std::move(block));
    const Blocks blocks = blocks_;
    dispatch_async(dispatch_get_main_queue(), ^{
      requestTurn(blocks);
    });
}

void DispatchMainQueue::asyncAfter(Seconds delay, std::function<void()> block) {
    const Blocks blocks = blocks_;
    const std::int64_t wait = nanoseconds(delay);
    const BlockQueue::Ticket ticket =
        blocks->hold(clock_.now() + std::chrono::nanoseconds(wait), std::move(block));
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, wait), dispatch_get_main_queue(), ^{
      blocks->redeem(ticket);
      requestTurn(blocks);
    });
}

void DispatchMainQueue::discardBlocks() {
    blocks_->discard();
}

}  // namespace tarvik::macdesktop
