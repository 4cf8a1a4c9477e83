#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>

#include "base/Observers.h"
#include "platform/AudioEngine.h"
#include "platform/MainQueue.h"

namespace tarvik::macdesktop {

/// Joins what the system says of the engines into one call of every observer on the main thread.
///
/// Only what it says of an engine that lives and does not run counts. It speaks of running ones
/// too, above all right after their start, and of those that were replaced a moment ago; a new
/// engine in answer to that would bring the next such word.
class ConfigurationChanges : public std::enable_shared_from_this<ConfigurationChanges> {
  public:
    /// Tells an engine from every other that lives; it is never followed.
    using Engine = const void*;

    /// `mainQueue` outlives the object and the reports.
    explicit ConfigurationChanges(platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}

    /// From now on `engine` lives, and `isRunning` says whether it runs. Main thread.
    void add(Engine engine, std::function<bool()> isRunning);
    /// From now on nothing that is said of `engine` counts, and nobody is asked about it. Main
    /// thread.
    void remove(Engine engine);

    /// Says that the configuration around `engine` has changed. Any thread; never waits for the
    /// main thread.
    void report(Engine engine);

    /// Calls `handler` once for all reports that come before the main thread gets to them, until
    /// the observation is dropped. Main thread.
    [[nodiscard]] std::unique_ptr<platform::AudioObservation> observe(
        std::function<void()> handler);

  private:
    void judgeReports();

    platform::MainQueue& mainQueue_;
    std::map<Engine, std::function<bool()>> engines_;
    Observers<platform::AudioObservation> observers_;
    std::mutex mutex_;
    /// Those that the main thread has not got to.
    std::set<Engine> reported_;
};

}  // namespace tarvik::macdesktop
