// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "base/Time.h"

namespace tarvik::macdesktop {

/// The blocks of a main queue: the ready blocks, in the order in which they became ready, and the
/// scheduled blocks, which wait for their deadline. Any thread.
class BlockQueue {
  public:
    /// Identifies a scheduled block. Tickets are in the order of the deadlines.
    using Ticket = std::pair<TimePoint, std::uint64_t>;

    /// Adds a block that is ready at once. An empty block is ignored.
    void append(std::function<void()> block);
    /// Adds a block that becomes ready when its ticket or a later one is released. An empty block
    /// is ignored.
    Ticket schedule(TimePoint deadline, std::function<void()> block);
    /// Makes the block of this ticket and those of all earlier tickets ready.
    void release(const Ticket& ticket);

    /// Takes the first ready block; empty when none is ready.
    std::function<void()> takeNext();
    bool hasReadyBlock() const;
    /// Destroys all blocks without running them.
    void discard();

  private:
    mutable std::mutex mutex_;
    std::deque<std::function<void()>> ready_;
    std::map<Ticket, std::function<void()>> scheduled_;
    std::uint64_t scheduleCount_ = 0;
};

}  // namespace tarvik::macdesktop
