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

/// One virtual clock with the main queue and the timers that follow it. The thread that calls
/// runUntilIdle(), advance() or runUntil() is the main thread; blocks may be submitted on any
/// thread.
///
/// Delayed blocks and timer ticks never come early, and like real ones they come a hair late (see
/// setLateness). Everything runs in the order of its moment, then of its submission. What a block
/// submits while it runs is run too, when it is due.
class SimulatedTime final : public platform::Clock,
                            public platform::MainQueue,
                            public platform::TimerService {
  public:
    static constexpr Seconds usualLateness{50e-6};

    SimulatedTime();
    ~SimulatedTime() override;

    TimePoint now() const override;
    void async(std::function<void()> block) override;
    void asyncAfter(Seconds delay, std::function<void()> block) override;
    [[nodiscard]] std::unique_ptr<platform::Timer> scheduledRepeatingTimer(
        Seconds interval, std::function<void()> block) override;

    /// Runs what is due at the present moment until nothing is; the clock stands still.
    void runUntilIdle();
    /// Runs the first thing that is due at the present moment; false when nothing is.
    bool runOne();
    /// Lets `interval` pass. Whatever was asked for up to and including its end is run, even if its
    /// lateness carries the clock a hair past that end.
    void advance(Seconds interval);
    /// Moves on to the next moment for which something was asked and runs one thing; false when
    /// nothing was asked for.
    bool runNext();
    /// Runs what is due, and what other threads submit, until `condition` holds; false when that
    /// takes more than ten seconds of real time. The virtual clock stands still.
    bool runUntil(const std::function<bool()>& condition);
    /// Lets time pass in which the main thread is busy: nothing runs, ticks are missed.
    void stall(Seconds interval);

    /// How late delayed blocks and ticks that are scheduled from now on come. With 0 they come
    /// exactly when asked for.
    void setLateness(Seconds lateness);

    /// True while a block of the main queue or a timer tick runs on the calling thread.
    bool isRunningBlock() const;
    /// Blocks that wait, timers not counted.
    std::size_t waitingBlocks() const;
    /// Timers that run.
    std::size_t runningTimers() const;

    /// Adds another queue that runs along, before every block of the main queue: `runOne` runs one
    /// thing and says whether there was one.
    void addCompanion(std::function<bool()> runOne);
    /// Destroys what waits without running it.
    void clear();

  private:
    using Nanoseconds = std::int64_t;

    struct TimerState {
        std::function<void()> block;
        Nanoseconds start = 0;
        Nanoseconds interval = 0;
        bool valid = true;
    };
    class RunningTimer;

    struct Entry {
        /// When it was asked for; it runs at its key's moment, which is later by the lateness.
        Nanoseconds asked = 0;
        std::function<void()> block;
        std::shared_ptr<TimerState> timer;
    };
    using Key = std::pair<Nanoseconds, std::uint64_t>;

    static Nanoseconds toNanoseconds(Seconds interval);
    void submit(Nanoseconds asked, Nanoseconds lateness, Entry entry);
    void scheduleTick(const std::shared_ptr<TimerState>& timer);
    void invalidate(TimerState& timer);
    bool runFirstAskedUpTo(Nanoseconds moment);
    bool runCompanion();
    void perform(const Entry& entry);

    mutable std::mutex mutex_;
    std::condition_variable submitted_;
    std::map<Key, Entry> entries_;
    Nanoseconds now_;
    Nanoseconds lateness_;
    std::uint64_t submissions_ = 0;
    std::vector<std::function<bool()>> companions_;
    std::thread::id runner_;
    int depth_ = 0;
};

}  // namespace tarvik::simulated
