// SPDX-License-Identifier: MIT

#include "platform/macos/audio/ConfigurationChanges.h"

#include <utility>

#include "base/Weakly.h"

namespace tarvik::macdesktop {

void ConfigurationChanges::add(Engine engine, std::function<bool()> isRunning) {
    engines_.insert_or_assign(engine, Registration{std::move(isRunning)});
}

void ConfigurationChanges::remove(Engine engine) {
    engines_.erase(engine);
}

void ConfigurationChanges::fail(Engine engine) {
    if (const auto found = engines_.find(engine); found != engines_.end()) {
        found->second.isStale = true;
    }
}

bool ConfigurationChanges::isStale(Engine engine) {
    const auto found = engines_.find(engine);
    if (found == engines_.end()) {
        return false;
    }
    const std::lock_guard lock(mutex_);
    return found->second.isStale || reported_.count(engine) > 0;
}

void ConfigurationChanges::report(Engine engine) {
    const std::lock_guard lock(mutex_);
    const bool isEvaluationPending = !reported_.empty();
    reported_.insert(engine);
    if (!isEvaluationPending) {
        mainQueue_.async(weakly(*this, &ConfigurationChanges::evaluateReports));
    }
}

std::unique_ptr<platform::AudioObservation> ConfigurationChanges::observe(
    std::function<void()> handler) {
    return observers_.add(std::move(handler));
}

// On the main thread, so a start that was under way at the time of the report has ended.
void ConfigurationChanges::evaluateReports() {
    std::set<Engine> reported;
    {
        const std::lock_guard lock(mutex_);
        reported.swap(reported_);
    }
    bool hasStopped = false;
    for (const Engine engine : reported) {
        if (const auto found = engines_.find(engine); found != engines_.end()) {
            found->second.isStale = true;
            hasStopped = hasStopped || !found->second.isRunning();
        }
    }
    if (hasStopped) {
        observers_.call();
    }
}

}  // namespace tarvik::macdesktop
