// SPDX-License-Identifier: MIT

#include "platform/macos/system/BlockQueue.h"

namespace tarvik::macdesktop {

void BlockQueue::append(std::function<void()> block) {
    if (block) {
        const std::lock_guard lock(mutex_);
        ready_.push_back(std::move(block));
    }
}

BlockQueue::Ticket BlockQueue::schedule(TimePoint deadline, std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    const Ticket ticket(deadline, scheduleCount_++);
    if (block) {
        scheduled_.emplace(ticket, std::move(block));
    }
    return ticket;
}

// The system's timers may fire late, each with another delay, and so out of order.
void BlockQueue::release(const Ticket& ticket) {
    const std::lock_guard lock(mutex_);
    const auto end = scheduled_.upper_bound(ticket);
    for (auto next = scheduled_.begin(); next != end; next = scheduled_.erase(next)) {
        ready_.push_back(std::move(next->second));
    }
}

std::function<void()> BlockQueue::takeNext() {
    const std::lock_guard lock(mutex_);
    if (ready_.empty()) {
        return {};
    }
    std::function<void()> block = std::move(ready_.front());
    ready_.pop_front();
    return block;
}

bool BlockQueue::hasReadyBlock() const {
    const std::lock_guard lock(mutex_);
    return !ready_.empty();
}

void BlockQueue::discard() {
    // Destroyed after the lock is released, because the destruction of a block may add another one.
    std::deque<std::function<void()>> ready;
    std::map<Ticket, std::function<void()>> scheduled;
    const std::lock_guard lock(mutex_);
    ready.swap(ready_);
    scheduled.swap(scheduled_);
}

}  // namespace tarvik::macdesktop
