// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <future>
#include <optional>

#include "platform/EventManager.h"

namespace tarvik::linuxdesktop {

/// The answer to one registration of a hotkey, for which the main thread waits for a limited time.
/// Settled once: by the thread that speaks to the desktop, or by the main thread at its timeout.
class RegistrationAnswer {
  public:
    /// Any thread but the main thread, once. False when the main thread waits no more.
    bool settle(platform::OSStatus status) {
        if (isSettled_.exchange(true)) {
            return false;
        }
        status_.set_value(status);
        return true;
    }

    /// Main thread, once. Empty without an answer within `timeout`.
    std::optional<platform::OSStatus> wait(std::chrono::milliseconds timeout) {
        std::future<platform::OSStatus> status = status_.get_future();
        if (status.wait_for(timeout) != std::future_status::ready && !isSettled_.exchange(true)) {
            return std::nullopt;
        }
        return status.get();
    }

  private:
    std::atomic<bool> isSettled_ = false;
    std::promise<platform::OSStatus> status_;
};

}  // namespace tarvik::linuxdesktop
