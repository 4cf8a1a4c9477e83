// SPDX-License-Identifier: MIT

#include "tests/support/SerialQueue.h"

#include <utility>

namespace tarvik::simulated {

void SerialQueue::submit(std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    blocks_.push_back(std::move(block));
}

void SerialQueue::submitFirst(std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    blocks_.push_front(std::move(block));
}

bool SerialQueue::runOne() {
    std::function<void()> block;
    {
        const std::lock_guard lock(mutex_);
        if (isRunning_ || blocks_.empty()) {
            return false;
        }
        isRunning_ = true;
        runner_ = std::this_thread::get_id();
        block = std::move(blocks_.front());
        blocks_.pop_front();
    }
    block();
    block = nullptr;
    const std::lock_guard lock(mutex_);
    isRunning_ = false;
    return true;
}

void SerialQueue::runAll() {
    while (runOne()) {
    }
}

bool SerialQueue::isEmpty() const {
    const std::lock_guard lock(mutex_);
    return blocks_.empty();
}

bool SerialQueue::isCurrent() const {
    const std::lock_guard lock(mutex_);
    return isRunning_ && runner_ == std::this_thread::get_id();
}

void SerialQueue::clear() {
    std::deque<std::function<void()>> waiting;
    const std::lock_guard lock(mutex_);
    waiting.swap(blocks_);
}

}  // namespace tarvik::simulated
