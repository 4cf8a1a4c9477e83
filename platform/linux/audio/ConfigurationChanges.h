// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "base/Observers.h"
#include "platform/AudioEngine.h"
#include "platform/MainQueue.h"

namespace tarvik::linuxdesktop {

/// Coalesces the configuration changes of a tenth of a second into one call of every observer, on
/// the main thread.
class ConfigurationChanges : public std::enable_shared_from_this<ConfigurationChanges> {
  public:
    /// `mainQueue` outlives this object.
    explicit ConfigurationChanges(platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}

    /// Reports that the configuration has changed. Any thread; never blocks.
    void report();

    /// Calls `handler` on the main thread, a tenth of a second after the first of a series of
    /// reports, until the observation is dropped. Main thread.
    [[nodiscard]] std::unique_ptr<platform::AudioObservation> observe(
        std::function<void()> handler);

  private:
    void callObservers();

    platform::MainQueue& mainQueue_;
    std::atomic<bool> isPending_ = false;
    Observers<platform::AudioObservation> observers_;
};

}  // namespace tarvik::linuxdesktop
