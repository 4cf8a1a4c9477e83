// SPDX-License-Identifier: MIT
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

/// Coalesces the system's reports of configuration changes into one call of every observer, on the
/// main thread.
///
/// A report counts only when its engine is registered and does not run. The system also reports
/// running engines, above all right after their start, and engines that were just replaced. A new
/// engine in answer to such a report would cause the next report.
class ConfigurationChanges : public std::enable_shared_from_this<ConfigurationChanges> {
  public:
    /// Identifies a registered engine; never dereferenced.
    using Engine = const void*;

    /// `mainQueue` outlives the object and the reports.
    explicit ConfigurationChanges(platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}

    /// Registers `engine`; `isRunning` tells whether the engine runs. Main thread.
    void add(Engine engine, std::function<bool()> isRunning);
    /// Forgets `engine`: pending and later reports about the engine do not count, and its
    /// `isRunning` is not called again. Main thread.
    void remove(Engine engine);
    /// Records that `engine` had no input or did not start. Main thread.
    void fail(Engine engine);
    /// Whether `engine` has failed or was reported since its registration, with or without an
    /// effect. A stale engine has to be replaced before it is used again. Main thread.
    bool isStale(Engine engine);

    /// Reports that the configuration of `engine` has changed. Any thread; never waits for the main
    /// thread.
    void report(Engine engine);

    /// Calls `handler` on the main thread, once for all reports since the last evaluation, until
    /// the observation is dropped. Main thread.
    [[nodiscard]] std::unique_ptr<platform::AudioObservation> observe(
        std::function<void()> handler);

  private:
    struct Registration {
        std::function<bool()> isRunning;
        bool isStale = false;
    };

    void evaluateReports();

    platform::MainQueue& mainQueue_;
    std::map<Engine, Registration> engines_;
    Observers<platform::AudioObservation> observers_;
    std::mutex mutex_;
    /// The reported engines that the main thread has not evaluated yet. Guarded by the mutex.
    std::set<Engine> reported_;
};

}  // namespace tarvik::macdesktop
