// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "platform/Clock.h"
#include "platform/MainQueue.h"
#include "platform/linux/loop/Alarm.h"

namespace tarvik::linuxdesktop {

/// The main queue on Qt's event loop. Made and destroyed on the main thread, after its
/// QCoreApplication was made; the loop need not run yet. Blocks are submitted on any thread.
///
/// Blocks run in the order of their due times, and with the same due time in the order of
/// submission. They also run in the nested loop of a modal alert or a menu. One turn of the loop
/// runs the blocks that were due at its start, so blocks that submit blocks do not starve other
/// events.
class QtMainQueue final : public platform::MainQueue {
  public:
    /// `clock` outlives the queue.
    explicit QtMainQueue(const platform::Clock& clock);
    ~QtMainQueue() override;

    void async(std::function<void()> block) override;
    void asyncAfter(Seconds delay, std::function<void()> block) override;

    /// Destroys the waiting blocks without running them. Main thread.
    void discardBlocks();

  private:
    /// The due time, and the number of the submission.
    using Key = std::pair<TimePoint, std::uint64_t>;

    void runTurn();
    std::function<void()> takeNext(const Key& end);
    void setAlarm();

    const platform::Clock& clock_;
    std::mutex mutex_;
    std::map<Key, std::function<void()>> blocks_;
    std::uint64_t submissions_ = 0;
    Alarm alarm_;
};

}  // namespace tarvik::linuxdesktop
