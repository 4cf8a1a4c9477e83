// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/Clock.h"
#include "platform/MainQueue.h"
#include "platform/linux/loop/Alarm.h"

namespace tarvik::linuxdesktop {

/// The main queue on Qt's event loop. Made and destroyed on the main thread, after its
/// QCoreApplication was made; the loop need not run yet. Blocks are submitted on any thread.
///
/// Another thread's next block becomes due at the earliest when the previous block of that thread
/// has run. A thread with a backlog so runs one block in each turn of the loop, and in between run
/// the blocks of other threads, the blocks that the main thread submits, and the other events of
/// Qt.
///
/// One turn of the loop runs the blocks that were due at its start, so blocks that submit blocks do
/// not starve other events. Blocks also run in the nested loop of a modal alert or a menu.
class QtMainQueue final : public platform::MainQueue {
  public:
    /// `clock` outlives the queue.
    explicit QtMainQueue(const platform::Clock& clock);
    ~QtMainQueue() override;

    void async(std::function<void()> block) override;
    void asyncAfter(Seconds delay, std::function<void()> block) override;

    /// Runs blocks in the place of Qt's loop, which does not run any more, until `condition` holds.
    /// False when `timeout` passes before that. Main thread.
    bool runUntil(const std::function<bool()>& condition, Seconds timeout);

    /// Destroys the waiting blocks without running them. Main thread.
    void discardBlocks();

  private:
    /// The due time, and the number of the submission.
    using Key = std::pair<TimePoint, std::uint64_t>;
    /// Unlike a std::thread::id, the number of a thread that has ended is not given out again.
    using ThreadNumber = std::uint64_t;

    /// The waiting blocks of one thread, at least one.
    struct Lane {
        std::map<Key, std::function<void()>> blocks;
        /// The time at which the previous block had run.
        TimePoint notBefore;

        Key nextKey() const;
    };
    using Lanes = std::map<ThreadNumber, Lane>;

    struct Taken {
        std::function<void()> block;
        ThreadNumber thread = 0;
    };

    static ThreadNumber currentThread();

    void runTurn();
    std::optional<Taken> takeNext(const Key& end);
    void holdBack(ThreadNumber thread);
    Lanes::iterator nextLane();
    void setAlarm();

    const platform::Clock& clock_;
    const ThreadNumber mainThread_ = currentThread();
    std::mutex mutex_;
    Lanes lanes_;
    std::uint64_t submissions_ = 0;
    Alarm alarm_;
};

}  // namespace tarvik::linuxdesktop
