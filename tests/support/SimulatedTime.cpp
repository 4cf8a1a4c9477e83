// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedTime.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

namespace tarvik::simulated {

namespace {
// Not 0, so that an unset time point shows. Whole seconds, so that sums with whole intervals are
// exact.
constexpr std::int64_t startTime = 1'000'000'000'000;
constexpr double nanosecondsPerSecond = 1e9;
}  // namespace

class SimulatedTime::RunningTimer final : public platform::Timer {
  public:
    RunningTimer(SimulatedTime& time, std::shared_ptr<TimerState> state)
        : time_(time), state_(std::move(state)) {}
    ~RunningTimer() override { time_.invalidate(*state_); }

    void invalidate() override { time_.invalidate(*state_); }

  private:
    SimulatedTime& time_;
    std::shared_ptr<TimerState> state_;
};

SimulatedTime::SimulatedTime() : now_(startTime), lateness_(toNanoseconds(defaultLateness)) {}

SimulatedTime::~SimulatedTime() {
    clear();
}

SimulatedTime::Nanoseconds SimulatedTime::toNanoseconds(Seconds interval) {
    return std::llround(std::max(0.0, interval.count()) * nanosecondsPerSecond);
}

TimePoint SimulatedTime::now() const {
    const std::lock_guard lock(mutex_);
    return TimePoint(Seconds(static_cast<double>(now_) / nanosecondsPerSecond));
}

void SimulatedTime::async(std::function<void()> block) {
    asyncAfter(Seconds(0), std::move(block));
}

void SimulatedTime::asyncAfter(Seconds delay, std::function<void()> block) {
    const Nanoseconds wait = toNanoseconds(delay);
    const std::lock_guard lock(mutex_);
    submit(now_ + wait, wait > 0 ? lateness_ : 0, Entry{0, std::move(block), nullptr});
}

void SimulatedTime::submit(Nanoseconds due, Nanoseconds lateness, Entry entry) {
    entry.due = due;
    entries_.emplace(Key(due + lateness, submissions_++), std::move(entry));
    submitted_.notify_all();
}

std::unique_ptr<platform::Timer> SimulatedTime::scheduledRepeatingTimer(
    Seconds interval, std::function<void()> block) {
    auto state = std::make_shared<TimerState>();
    state->block = std::move(block);
    state->interval = std::max<Nanoseconds>(1, toNanoseconds(interval));
    {
        const std::lock_guard lock(mutex_);
        state->start = now_;
        scheduleTick(state);
    }
    return std::make_unique<RunningTimer>(*this, std::move(state));
}

// Ticks are whole intervals after the timer's start. Ticks in the past are skipped.
void SimulatedTime::scheduleTick(const std::shared_ptr<TimerState>& timer) {
    const Nanoseconds ticks = (now_ - timer->start) / timer->interval + 1;
    submit(timer->start + ticks * timer->interval, lateness_, Entry{0, nullptr, timer});
}

void SimulatedTime::invalidate(TimerState& timer) {
    const std::lock_guard lock(mutex_);
    timer.isValid = false;
    std::erase_if(entries_, [&](const auto& entry) { return entry.second.timer.get() == &timer; });
}

void SimulatedTime::runUntilIdle() {
    advance(Seconds(0));
}

bool SimulatedTime::runOne() {
    Nanoseconds now = 0;
    {
        const std::lock_guard lock(mutex_);
        now = now_;
    }
    return runOtherQueues() || runFirstDueUpTo(now);
}

void SimulatedTime::advance(Seconds interval) {
    Nanoseconds end = 0;
    {
        const std::lock_guard lock(mutex_);
        end = now_ + toNanoseconds(interval);
    }
    while (runOtherQueues() || runFirstDueUpTo(end)) {
    }
    const std::lock_guard lock(mutex_);
    now_ = std::max(now_, end);
}

bool SimulatedTime::runNext() {
    return runOtherQueues() || runFirstDueUpTo(std::numeric_limits<Nanoseconds>::max());
}

bool SimulatedTime::runUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (runOne()) {
            continue;
        }
        std::unique_lock lock(mutex_);
        // The condition may become true without a submission, so the wait is short.
        submitted_.wait_for(lock, std::chrono::milliseconds(1));
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
    }
    return true;
}

void SimulatedTime::stall(Seconds interval) {
    const std::lock_guard lock(mutex_);
    now_ += toNanoseconds(interval);
}

void SimulatedTime::setLateness(Seconds lateness) {
    const std::lock_guard lock(mutex_);
    lateness_ = toNanoseconds(lateness);
}

bool SimulatedTime::runOtherQueues() {
    return std::any_of(queues_.begin(), queues_.end(),
                       [](const std::function<bool()>& runOne) { return runOne(); });
}

bool SimulatedTime::runFirstDueUpTo(Nanoseconds limit) {
    Entry entry;
    {
        const std::lock_guard lock(mutex_);
        const auto first = entries_.begin();
        if (first == entries_.end() || first->second.due > limit) {
            return false;
        }
        now_ = std::max(now_, first->first.first);
        entry = std::move(first->second);
        entries_.erase(first);
        runner_ = std::this_thread::get_id();
        ++nestingDepth_;
    }
    perform(entry);
    entry = {};
    const std::lock_guard lock(mutex_);
    --nestingDepth_;
    return true;
}

void SimulatedTime::perform(const Entry& entry) {
    if (!entry.timer) {
        entry.block();
        return;
    }
    entry.timer->block();
    const std::lock_guard lock(mutex_);
    if (entry.timer->isValid) {
        scheduleTick(entry.timer);
    }
}

bool SimulatedTime::isRunningBlock() const {
    const std::lock_guard lock(mutex_);
    return nestingDepth_ > 0 && runner_ == std::this_thread::get_id();
}

std::size_t SimulatedTime::waitingBlocks() const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count_if(
        entries_.begin(), entries_.end(), [](const auto& entry) { return !entry.second.timer; }));
}

std::size_t SimulatedTime::runningTimers() const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count_if(
        entries_.begin(), entries_.end(), [](const auto& entry) { return entry.second.timer; }));
}

void SimulatedTime::addQueue(std::function<bool()> runOne) {
    queues_.push_back(std::move(runOne));
}

void SimulatedTime::clear() {
    // Destroying a block may submit or invalidate, so the blocks are destroyed without the lock.
    std::map<Key, Entry> waiting;
    {
        const std::lock_guard lock(mutex_);
        waiting.swap(entries_);
    }
}

}  // namespace tarvik::simulated
