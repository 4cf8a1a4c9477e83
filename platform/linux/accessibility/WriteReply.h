// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>

#include "platform/Accessibility.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// The status of one write, handed from the worker to the main thread. Either the main thread takes
/// the status before its deadline, or the worker learns that nobody waits and undoes the write. The
/// mutex decides which of the two happens. Any thread.
class WriteReply {
  public:
    /// Hands the status over; false when nobody waits any more.
    bool deliver(platform::AXError status) {
        const std::lock_guard lock(mutex_);
        status_ = status;
        delivered_.notify_one();
        return !isAbandoned_;
    }

    /// Blocks until the status is there; axErrorCannotComplete when `deadline` passes first.
    platform::AXError await(SteadyTime deadline) {
        std::unique_lock lock(mutex_);
        delivered_.wait_until(lock, deadline, [this] { return status_.has_value(); });
        isAbandoned_ = !status_;
        return status_.value_or(platform::axErrorCannotComplete);
    }

    bool isAwaited() const {
        const std::lock_guard lock(mutex_);
        return !isAbandoned_;
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable delivered_;
    std::optional<platform::AXError> status_;
    bool isAbandoned_ = false;
};

}  // namespace tarvik::linuxdesktop
