#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "base/Time.h"

namespace tarvik::macdesktop {

/// Blocks that wait for the main thread: those that are ready, in the order in which they became
/// so, and those held back until a moment. Any thread.
class BlockQueue {
  public:
    /// Tells a block that is held back from every other, in the order of their moments.
    using Ticket = std::pair<TimePoint, std::uint64_t>;

    /// The block is ready at once. An empty one is ignored.
    void append(std::function<void()> block);
    /// The block is ready once its ticket, or one of a later moment, is redeemed.
    Ticket hold(TimePoint moment, std::function<void()> block);
    /// Makes every block ready that was held back until this ticket's moment or an earlier one.
    void redeem(const Ticket& ticket);

    /// Takes the block that has been ready for longest; empty when none is.
    std::function<void()> takeNext();
    bool isAnyReady() const;
    /// Destroys the blocks that wait, ready or not, without running them.
    void discard();

  private:
    mutable std::mutex mutex_;
    std::deque<std::function<void()>> ready_;
    std::map<Ticket, std::function<void()>> held_;
    std::uint64_t submissions_ = 0;
};

}  // namespace tarvik::macdesktop
