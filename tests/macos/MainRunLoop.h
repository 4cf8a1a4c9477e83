// SPDX-License-Identifier: MIT
#pragma once

#import <Foundation/Foundation.h>

#include <functional>

#include "base/Time.h"
#include "platform/macos/system/MonotonicClock.h"

namespace tarvik::tests {

/// Runs the main run loop until `condition` holds; false when `timeout` passes first. Main thread.
inline bool runMainLoopUntil(const std::function<bool()>& condition, Seconds timeout) {
    const macdesktop::MonotonicClock clock;
    const TimePoint deadline = clock.now() + timeout;
    while (!condition()) {
        if (clock.now() > deadline) {
            return false;
        }
        @autoreleasepool {
            [NSRunLoop.mainRunLoop runMode:NSDefaultRunLoopMode
                                beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.001]];
        }
    }
    return true;
}

}  // namespace tarvik::tests
