// SPDX-License-Identifier: MIT

#import "platform/macos/system/DispatchMainQueue.h"

#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>

#include <utility>

#include "platform/macos/Conversions.h"

namespace tarvik::macdesktop {

namespace {

using Blocks = std::shared_ptr<BlockQueue>;

// A block may run the loop of an alert. Dispatch runs no other block on the main thread until that
// block has returned. So Dispatch only requests a turn, and the run loop runs the block.
void requestTurn(Blocks blocks);

// A pool for each turn: the application's pool is drained by the next event, which may be hours
// away.
void takeTurn(const Blocks& blocks) {
    @autoreleasepool {
        const std::function<void()> block = blocks->takeNext();
        // Requested before the block runs, so that the loop of an alert inside the block can go on.
        if (blocks->hasReadyBlock()) {
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
    const std::int64_t delayCount = nanoseconds(delay);
    const BlockQueue::Ticket ticket =
        blocks->schedule(clock_.now() + std::chrono::nanoseconds(delayCount), std::move(block));
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, delayCount), dispatch_get_main_queue(), ^{
      blocks->release(ticket);
      requestTurn(blocks);
    });
}

void DispatchMainQueue::discardBlocks() {
    blocks_->discard();
}

}  // namespace tarvik::macdesktop
