#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

#include "platform/Accessibility.h"

namespace tarvik::linuxdesktop {

/// Hands the status of one write from the worker to the main thread, which waits for it and at some
/// moment does not any more. Both agree on which it was. Any thread.
class WriteTicket {
  public:
    /// Gives the status; false when nobody waits any more, and what was done is to be undone.
    bool answer(platform::AXError status) {
        const std::lock_guard lock(mutex_);
        status_ = status;
        answered_.notify_one();
        return !isAbandoned_;
    }

    /// Waits for the status; "cannot complete" when it does not come by `deadline`.
    platform::AXError await(std::chrono::steady_clock::time_point deadline) {
        std::unique_lock lock(mutex_);
        answered_.wait_until(lock, deadline, [this] { return status_.has_value(); });
        isAbandoned_ = !status_;
        return status_.value_or(platform::axErrorCannotComplete);
    }

    bool isAwaited() const {
        const std::lock_guard lock(mutex_);
        return !isAbandoned_;
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable answered_;
    std::optional<platform::AXError> status_;
    bool isAbandoned_ = false;
};

}  // namespace tarvik::linuxdesktop
