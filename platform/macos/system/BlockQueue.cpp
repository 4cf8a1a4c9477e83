#include "platform/macos/system/BlockQueue.h"

namespace tarvik::macdesktop {

void BlockQueue::append(std::function<void()> block) {
    if (block) {
        const std::lock_guard lock(mutex_);
        ready_.push_back(std::move(block));
    }
}

BlockQueue::Ticket BlockQueue::hold(TimePoint moment, std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    const Ticket ticket(moment, submissions_++);
    if (block) {
        held_.emplace(ticket, std::move(block));
    }
    return ticket;
}

// The system's own timers may fire late, each by an amount of its own, and so out of order.
void BlockQueue::redeem(const Ticket& ticket) {
    const std::lock_guard lock(mutex_);
    const auto end = held_.upper_bound(ticket);
    for (auto held = held_.begin(); held != end; held = held_.erase(held)) {
        ready_.push_back(std::move(held->second));
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

bool BlockQueue::isAnyReady() const {
    const std::lock_guard lock(mutex_);
    return !ready_.empty();
}

void BlockQueue::discard() {
    // Destroyed outside the lock: what a block holds may submit another one when it goes.
    std::deque<std::function<void()>> ready;
    std::map<Ticket, std::function<void()>> held;
    const std::lock_guard lock(mutex_);
    ready.swap(ready_);
    held.swap(held_);
}

}  // namespace tarvik::macdesktop
