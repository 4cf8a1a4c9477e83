// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include "base/Time.h"

namespace tarvik::platform {

/// The queue of blocks that the main thread runs, one at a time, from its event loop.
///
/// Blocks of one thread run in the order of their due times, and with the same due time in the
/// order of submission. Blocks of several threads run in that order too, with one exception: a
/// block that waits behind another block of its own thread may be overtaken. The backlog of one
/// thread thus need not hold up the others.
///
/// A block never runs inside the call that submits it, not even on the main thread. Blocks that are
/// still queued when the application ends are destroyed without being run.
class MainQueue {
  public:
    virtual ~MainQueue() = default;

    /// Runs `block` on the main thread in a later turn of its loop. Any thread; never blocks.
    virtual void async(std::function<void()> block) = 0;

    /// Runs `block` on the main thread after `delay`, never earlier. Any thread; never blocks.
    virtual void asyncAfter(Seconds delay, std::function<void()> block) = 0;
};

}  // namespace tarvik::platform
