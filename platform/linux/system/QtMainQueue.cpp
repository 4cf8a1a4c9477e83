// SPDX-License-Identifier: MIT

#include "platform/linux/system/QtMainQueue.h"

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
    blocks_.emplace(key, std::move(block));
    if (blocks_.begin()->first == key) {
        setAlarm();
    }
}

void QtMainQueue::discardBlocks() {
    // Declared before the lock and so destroyed after it: the destructor of something that a block
    // holds may submit another block.
    std::map<Key, std::function<void()>> discarded;
    const std::lock_guard lock(mutex_);
    discarded.swap(blocks_);
    setAlarm();
}

void QtMainQueue::runTurn() {
    std::unique_lock lock(mutex_);
    const Key end(clock_.now(), submissions_);
    lock.unlock();
    while (const std::function<void()> block = takeNext(end)) {
        block();
    }
}

// The alarm is set for the next block before the taken block runs: a nested loop of the taken block
// then runs the next one.
std::function<void()> QtMainQueue::takeNext(const Key& end) {
    const std::lock_guard lock(mutex_);
    const auto next = blocks_.begin();
    if (next == blocks_.end() || next->first >= end) {
        return {};
    }
    std::function<void()> block = std::move(next->second);
    blocks_.erase(next);
    setAlarm();
    return block;
}

void QtMainQueue::setAlarm() {
    if (blocks_.empty()) {
        alarm_.clear();
    } else {
        alarm_.set(blocks_.begin()->first.first);
    }
}

}  // namespace tarvik::linuxdesktop
