// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include "platform/linux/loop/PollLoop.h"

namespace tarvik::linuxdesktop {

/// Waits for a condition, one at a time, without blocking. Input thread only.
class ConditionWait {
  public:
    explicit ConditionWait(PollLoop& loop) : deadline_(loop) {}

    /// Calls `next` once, with whether `condition` holds: as soon as it does, which may be at once,
    /// and otherwise after `timeout`.
    void begin(std::chrono::milliseconds timeout, std::function<bool()> condition,
               std::function<void(bool)> next);
    /// Calls `next` after `delay`.
    void pause(std::chrono::milliseconds delay, std::function<void()> next);
    /// Something has changed that the condition may depend on.
    void handleChange();

  private:
    struct Waiting {
        std::function<bool()> condition;
        std::function<void(bool)> next;
    };

    void end(bool holds);

    std::optional<Waiting> waiting_;
    Deadline deadline_;
};

}  // namespace tarvik::linuxdesktop
