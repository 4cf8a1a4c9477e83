// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/Accessibility.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// The result of one write, handed from the worker to the main thread. First comes the status. A
/// write whose status is not known in time, or not awaited at all, is pending: the program may
/// still carry the write out. The worker settles a pending write later. Either the main thread
/// still wants the text then, or the worker undoes the write. The mutex decides which of the two
/// happens.
class WriteReply {
  public:
    /// Hands the status over; `isPending` when the program has not replied, and may get the text
    /// later. False when the main thread does not wait for the status, and the write is pending.
    /// Worker thread.
    bool deliver(platform::AXError status, bool isPending) {
        const std::lock_guard lock(mutex_);
        if (isAbandoned_) {
            return false;
        }
        status_ = status;
        isPending_ = isPending;
        changed_.notify_one();
        return true;
    }

    /// Blocks until the status is there; axErrorCannotComplete when `deadline` passes first. Main
    /// thread.
    platform::AXError await(SteadyTime deadline) {
        std::unique_lock lock(mutex_);
        changed_.wait_until(lock, deadline, [this] { return status_.has_value(); });
        isAbandoned_ = !status_;
        isPending_ = isPending_ || isAbandoned_;
        return status_.value_or(platform::axErrorCannotComplete);
    }

    /// Nobody will wait for the status, so the write is pending from the start. Main thread.
    void abandon() {
        const std::lock_guard lock(mutex_);
        isAbandoned_ = isPending_ = true;
    }

    /// Whether the write has no outcome yet, after await(). Main thread.
    bool isPending() const {
        const std::lock_guard lock(mutex_);
        return isPending_;
    }

    /// Whether the text of a pending write is still wanted. Any thread.
    bool isWanted() const {
        const std::lock_guard lock(mutex_);
        return !isGivenUp_;
    }

    /// Ends a pending write: whether the text stands in the element. False when nobody wants the
    /// text any more, and it has to be deleted again. Only the first call counts. Worker thread.
    bool settle(bool hasArrived) {
        std::unique_lock lock(mutex_);
        if (outcome_) {
            return *outcome_;
        }
        const bool isWanted = hasArrived && !isGivenUp_;
        outcome_ = isWanted;
        if (const auto onSettled = onSettled_) {
            lock.unlock();
            onSettled();
        }
        // giveUp() may have been called since. It has answered that the text has arrived.
        return isWanted;
    }

    /// Whether the text of a pending write has arrived; empty until the write is settled. Main
    /// thread.
    std::optional<bool> outcome() const {
        const std::lock_guard lock(mutex_);
        return outcome_;
    }

    /// Calls `handler` once a pending write is settled: at once, or on the worker's thread. Main
    /// thread.
    void whenSettled(std::function<void()> handler) {
        std::unique_lock lock(mutex_);
        if (outcome_) {
            lock.unlock();
            handler();
        } else {
            onSettled_ = std::move(handler);
        }
    }

    /// The text of a pending write is not wanted any more. Answers whether it has arrived already.
    /// Main thread.
    bool giveUp() {
        const std::lock_guard lock(mutex_);
        isGivenUp_ = true;
        return outcome_.value_or(false);
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<platform::AXError> status_;
    bool isAbandoned_ = false;
    bool isPending_ = false;
    bool isGivenUp_ = false;
    std::optional<bool> outcome_;
    std::function<void()> onSettled_;
};

}  // namespace tarvik::linuxdesktop
