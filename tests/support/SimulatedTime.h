// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/Clock.h"
#include "platform/MainQueue.h"
#include "platform/TimerService.h"

namespace tarvik::simulated {

/// A virtual clock, with the main queue and the timers on this clock. The thread that calls
/// runUntilIdle(), advance() or runUntil() is the main thread. Blocks may be submitted on any
/// thread.
///
/// Delayed blocks and timer ticks never come early. Like real ones they come slightly late (see
/// setLateness()). Blocks and ticks run in the order of their times, then of their submission. A
/// block that another block submits runs in the same call, if it is due by then.
class SimulatedTime final : public platform::Clock,
                            public platform::MainQueue,
                            public platform::TimerService {
  public:
    static constexpr Seconds defaultLateness{50e-6};

    SimulatedTime();
    ~SimulatedTime() override;

    TimePoint now() const override;
    void async(std::function<void()> block) override;
    void asyncAfter(Seconds delay, std::function<void()> block) override;
    [[nodiscard]] std::unique_ptr<platform::Timer> scheduledRepeatingTimer(
        Seconds interval, std::function<void()> block) override;

    /// Runs everything that is due now, without moving the clock.
    void runUntilIdle();
    /// Runs the first block or tick that is due now; false when there is none.
    bool runOne();
    /// Moves the clock on by `interval` and runs everything that is due by then, including the end.
    /// The lateness of the last block may move the clock slightly beyond the end.
    void advance(Seconds interval);
    /// Moves the clock on to the next due block or tick and runs it; false when there is none.
    bool runNext();
    /// Runs what is due, and what other threads submit, until `condition` holds, without moving the
    /// clock. False when 10 s of real time have passed before that.
    bool runUntil(const std::function<bool()>& condition);
    /// Moves the clock on without running anything, as if the main thread were busy. Ticks are
    /// missed.
    void stall(Seconds interval);

    /// Sets how late blocks and ticks come that are scheduled from now on. With 0 they come exactly
    /// when due.
    void setLateness(Seconds lateness);

    /// Whether a block of the main queue or a timer tick is running on the calling thread.
    bool isRunningBlock() const;
    /// The number of waiting blocks, without timers.
    std::size_t waitingBlocks() const;
    /// The number of running timers.
    std::size_t runningTimers() const;

    /// Adds another queue, whose blocks run before every block of the main queue. `runOne` runs one
    /// block of that queue and returns false when there is none.
    void addQueue(std::function<bool()> runOne);
    /// Destroys all waiting blocks and timers without running them.
    void clear();

  private:
    using Nanoseconds = std::int64_t;

    struct TimerState {
        std::function<void()> block;
        Nanoseconds start = 0;
        Nanoseconds interval = 0;
        bool isValid = true;
    };
    class RunningTimer;

    struct Entry {
        /// The requested time. The time in the key is later by the lateness.
        Nanoseconds due = 0;
        std::function<void()> block;
        std::shared_ptr<TimerState> timer;
    };
    using Key = std::pair<Nanoseconds, std::uint64_t>;

    static Nanoseconds toNanoseconds(Seconds interval);
    void submit(Nanoseconds due, Nanoseconds lateness, Entry entry);
    void scheduleTick(const std::shared_ptr<TimerState>& timer);
    void invalidate(TimerState& timer);
    bool runFirstDueUpTo(Nanoseconds limit);
    bool runOtherQueues();
    void perform(const Entry& entry);

    mutable std::mutex mutex_;
    std::condition_variable submitted_;
    std::map<Key, Entry> entries_;
    Nanoseconds now_;
    Nanoseconds lateness_;
    std::uint64_t submissions_ = 0;
    std::vector<std::function<bool()>> queues_;
    std::thread::id runner_;
    int nestingDepth_ = 0;
};

}  // namespace tarvik::simulated
