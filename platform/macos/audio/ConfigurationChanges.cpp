// SPDX-License-Identifier: MIT

#include "platform/macos/audio/ConfigurationChanges.h"

#include <algorithm>
#include <utility>

#include "base/Weakly.h"

namespace tarvik::macdesktop {

void ConfigurationChanges::add(Engine engine, std::function<bool()> isRunning) {
    engines_.insert_or_assign(engine, std::move(isRunning));
}

void ConfigurationChanges::remove(Engine engine) {
    engines_.erase(engine);
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
    const bool hasStopped = std::any_of(reported.begin(), reported.end(), [this](Engine engine) {
        const auto found = engines_.find(engine);
        return found != engines_.end() && !found->second();
    });
    if (hasStopped) {
        observers_.call();
    }
}

}  // namespace tarvik::macdesktop
