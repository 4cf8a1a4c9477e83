// SPDX-License-Identifier: MIT

#include "platform/linux/loop/EventLoop.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

std::optional<SteadyTime> EventLoop::nextDeadline() const {
    if (deadlines_.empty()) {
        return std::nullopt;
    }
    return std::ranges::min(deadlines_, {}, &Deadline::time_)->time_;
}

void EventLoop::runDeadlines() {
    const SteadyTime time = now();
    while (!deadlines_.empty()) {
        // The earliest first: a late loop has several to run.
        const auto due = std::ranges::min_element(deadlines_, {}, &Deadline::time_);
        if ((*due)->time_ > time) {
            return;
        }
        Deadline& deadline = **due;
        deadlines_.erase(due);
        // Before the action, which may run a nested loop.
        onDeadlinesChanged();
        std::exchange(deadline.action_, nullptr)();
    }
}

void Deadline::set(SteadyTime time, std::function<void()> action) {
    std::erase(loop_.deadlines_, this);
    // A time that has passed counts as now, so that an action that sets it again ends its turn.
    time_ = std::max(time, loop_.now());
    action_ = std::move(action);
    loop_.deadlines_.push_back(this);
    loop_.onDeadlinesChanged();
}

void Deadline::set(std::chrono::milliseconds delay, std::function<void()> action) {
    set(loop_.now() + delay, std::move(action));
}

void Deadline::clear() {
    if (std::erase(loop_.deadlines_, this) > 0) {
        action_ = nullptr;
        loop_.onDeadlinesChanged();
    }
}

}  // namespace tarvik::linuxdesktop
