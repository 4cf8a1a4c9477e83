// SPDX-License-Identifier: MIT

#include "platform/linux/system/QtMainQueue.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

namespace tarvik::linuxdesktop {

QtMainQueue::QtMainQueue(const platform::Clock& clock)
    : clock_(clock), alarm_([this] { runTurn(); }) {}

QtMainQueue::~QtMainQueue() {
    discardBlocks();
}

void QtMainQueue::async(std::function<void()> block) {
    asyncAfter(Seconds(0), std::move(block));
}

void QtMainQueue::asyncAfter(Seconds delay, std::function<void()> block) {
    if (!block) {
        return;
    }
    // The comparison makes a NaN no delay.
    const Seconds wait = delay > Seconds(0) ? delay : Seconds(0);
    const std::lock_guard lock(mutex_);
    // The clock is read under the lock; otherwise blocks of two threads could get the wrong order.
    const Key key(clock_.now() + wait, submissions_++);
    lanes_[currentThread()].blocks.emplace(key, std::move(block));
    if (nextLane()->second.nextKey() == key) {
        setAlarm();
    }
}

void QtMainQueue::discardBlocks() {
    // Declared before the lock and so destroyed after it: the destructor of something that a block
    // holds may submit another block.
    Lanes discarded;
    const std::lock_guard lock(mutex_);
    discarded.swap(lanes_);
    setAlarm();
}

// Blocks wake Qt's loop alone, so this looks for them.
bool QtMainQueue::runUntil(const std::function<bool()>& condition, Seconds timeout) {
    constexpr std::chrono::milliseconds interval{5};
    const TimePoint deadline = clock_.now() + timeout;
    for (; !condition(); std::this_thread::sleep_for(interval)) {
        if (clock_.now() >= deadline) {
            return false;
        }
        runTurn();
    }
    return true;
}

QtMainQueue::ThreadNumber QtMainQueue::currentThread() {
    static std::atomic<ThreadNumber> threads = 0;
    thread_local const ThreadNumber number = threads++;
    return number;
}

QtMainQueue::Key QtMainQueue::Lane::nextKey() const {
    const auto& [due, submission] = blocks.begin()->first;
    return {std::max(due, notBefore), submission};
}

void QtMainQueue::runTurn() {
    std::unique_lock lock(mutex_);
    const Key end(clock_.now(), submissions_);
    lock.unlock();
    while (const std::optional<Taken> next = takeNext(end)) {
        next->block();
        holdBack(next->thread);
    }
}

// The alarm is set for the next block before the taken block runs: a nested loop of the taken block
// then runs the next one.
std::optional<QtMainQueue::Taken> QtMainQueue::takeNext(const Key& end) {
    const std::lock_guard lock(mutex_);
    const auto lane = nextLane();
    if (lane == lanes_.end() || lane->second.nextKey() >= end) {
        return std::nullopt;
    }
    const auto first = lane->second.blocks.begin();
    Taken taken{std::move(first->second), lane->first};
    lane->second.blocks.erase(first);
    if (lane->second.blocks.empty()) {
        lanes_.erase(lane);
    }
    setAlarm();
    return taken;
}

// The main thread's own blocks are not held back. A step that a block takes on the main thread,
// such as the second hop of a hotkey, would otherwise wait for the backlog of other threads.
void QtMainQueue::holdBack(ThreadNumber thread) {
    const std::lock_guard lock(mutex_);
    const auto lane = lanes_.find(thread);
    if (thread != mainThread_ && lane != lanes_.end()) {
        lane->second.notBefore = clock_.now();
    }
}

QtMainQueue::Lanes::iterator QtMainQueue::nextLane() {
    return std::ranges::min_element(
        lanes_, {}, [](const Lanes::value_type& lane) { return lane.second.nextKey(); });
}

void QtMainQueue::setAlarm() {
    if (const auto lane = nextLane(); lane != lanes_.end()) {
        alarm_.set(lane->second.nextKey().first);
    } else {
        alarm_.clear();
    }
}

}  // namespace tarvik::linuxdesktop
