#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>

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
    class Observation;

    void callObservers();

    platform::MainQueue& mainQueue_;
    std::atomic<bool> pending_ = false;
    std::map<std::uint64_t, std::function<void()>> observers_;
    std::uint64_t nextObserver_ = 0;
};

}  // namespace tarvik::linuxdesktop
