// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>

#include "platform/linux/loop/EventLoop.h"

namespace tarvik::tests {

/// A loop whose time passes when the test says so. Without descriptors.
class VirtualLoop final : public linuxdesktop::EventLoop {
  public:
    std::unique_ptr<Watch> watch(int /*descriptor*/, short /*events*/,
                                 std::function<void()> /*onReady*/) override {
        throw std::logic_error("a virtual loop watches no descriptors");
    }
    linuxdesktop::SteadyTime now() const override { return now_; }

    /// Runs the deadlines until `time`, each at its own time.
    void runUntil(linuxdesktop::SteadyTime time) {
        for (auto next = nextDeadline(); next && *next <= time; next = nextDeadline()) {
            now_ = std::max(now_, *next);
            runDeadlines();
        }
        now_ = std::max(now_, time);
    }
    void runFor(std::chrono::milliseconds time) { runUntil(now_ + time); }

  private:
    void onDeadlinesChanged() override {}

    linuxdesktop::SteadyTime now_{std::chrono::hours(1)};
};

}  // namespace tarvik::tests
