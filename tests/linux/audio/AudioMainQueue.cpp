#include "tests/linux/audio/AudioMainQueue.h"

#include <algorithm>
#include <utility>

namespace tarvik::tests {

void AudioMainQueue::async(std::function<void()> block) {
    asyncAfter(Seconds(0), std::move(block));
}

void AudioMainQueue::asyncAfter(Seconds delay, std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    blocks_.emplace(RealClock::now() + std::chrono::ceil<RealClock::duration>(delay),
                    std::move(block));
    added_.notify_one();
}

std::function<void()> AudioMainQueue::takeDue(RealClock::time_point until) {
    std::unique_lock lock(mutex_);
    const auto next = blocks_.empty() ? until : std::min(until, blocks_.begin()->first);
    if (RealClock::now() < next) {
        added_.wait_until(lock, next);
    }
    if (blocks_.empty() || blocks_.begin()->first > RealClock::now()) {
        return {};
    }
    auto block = std::move(blocks_.begin()->second);
    blocks_.erase(blocks_.begin());
    return block;
}

bool AudioMainQueue::runUntil(const std::function<bool()>& condition, Seconds limit) {
    const auto end = RealClock::now() + std::chrono::ceil<RealClock::duration>(limit);
    while (!condition()) {
        if (RealClock::now() >= end) {
            return false;
        }
        if (const auto block =
                takeDue(std::min(end, RealClock::now() + std::chrono::milliseconds(5)))) {
            block();
        }
    }
    return true;
}

}  // namespace tarvik::tests
