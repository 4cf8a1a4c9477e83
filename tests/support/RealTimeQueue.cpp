// SPDX-License-Identifier: MIT

#include "tests/support/RealTimeQueue.h"

#include <algorithm>

namespace tarvik::tests {

using namespace std::chrono_literals;

void RealTimeQueue::async(std::function<void()> block) {
    asyncAfter(Seconds(0), std::move(block));
}

void RealTimeQueue::asyncAfter(Seconds delay, std::function<void()> block) {
    const auto due = std::chrono::steady_clock::now() +
                     std::chrono::ceil<std::chrono::steady_clock::duration>(delay);
    const std::lock_guard lock(mutex_);
    blocks_.emplace(due, std::move(block));
    changed_.notify_one();
}

// Waits for the next due block, at most until `deadline`, and runs all due blocks.
void RealTimeQueue::runDue(SteadyTimePoint deadline) {
    std::unique_lock lock(mutex_);
    const SteadyTimePoint next =
        blocks_.empty() ? deadline : std::min(blocks_.begin()->first, deadline);
    if (next > std::chrono::steady_clock::now()) {
        changed_.wait_until(lock, next);
    }
    while (!blocks_.empty() && blocks_.begin()->first <= std::chrono::steady_clock::now()) {
        const auto block = std::move(blocks_.extract(blocks_.begin()).mapped());
        lock.unlock();
        block();
        lock.lock();
    }
}

bool RealTimeQueue::runUntil(const std::function<bool()>& condition,
                             std::chrono::milliseconds timeout) {
    // A condition that runs a program would take a whole processor away from what it waits for.
    constexpr std::chrono::steady_clock::duration minRest = 2ms;
    constexpr std::chrono::steady_clock::duration maxRest = 50ms;
    const SteadyTimePoint deadline = std::chrono::steady_clock::now() + timeout;
    while (true) {
        const SteadyTimePoint begin = std::chrono::steady_clock::now();
        if (condition()) {
            return true;
        }
        const SteadyTimePoint end = std::chrono::steady_clock::now();
        if (end > deadline) {
            return false;
        }
        runDue(end + std::clamp(2 * (end - begin), minRest, maxRest));
    }
}

void RealTimeQueue::runFor(std::chrono::milliseconds interval) {
    runUntil([] { return false; }, interval);
}

}  // namespace tarvik::tests
