#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "base/Observers.h"
#include "platform/AudioEngine.h"
#include "platform/MainQueue.h"

namespace tarvik::linuxdesktop {

/// Joins what happens within a tenth of a second into one call of every observer on the main
/// thread.
class ConfigurationChanges : public std::enable_shared_from_this<ConfigurationChanges> {
  public:
    explicit ConfigurationChanges(platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}

    /// Says that the configuration has changed. Any thread; never blocks.
    void report();

    /// Calls `handler` for every burst of reports until the observation is dropped. Main thread.
    [[nodiscard]] std::unique_ptr<platform::AudioObservation> observe(
        std::function<void()> handler);

  private:
    platform::MainQueue& mainQueue_;
    std::atomic<bool> pending_ = false;
    Observers<platform::AudioObservation> observers_;
};

}  // namespace tarvik::linuxdesktop
