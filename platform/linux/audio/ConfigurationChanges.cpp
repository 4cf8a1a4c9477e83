// SPDX-License-Identifier: MIT

#include "platform/linux/audio/ConfigurationChanges.h"

#include <utility>

#include "base/Weakly.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds coalescingInterval{0.1};

}  // namespace

void ConfigurationChanges::report() {
    if (!isPending_.exchange(true)) {
        mainQueue_.asyncAfter(coalescingInterval,
                              weakly(*this, &ConfigurationChanges::callObservers));
    }
}

void ConfigurationChanges::callObservers() {
    isPending_ = false;
    observers_.call();
}

std::unique_ptr<platform::AudioObservation> ConfigurationChanges::observe(
    std::function<void()> handler) {
    return observers_.add(std::move(handler));
}

}  // namespace tarvik::linuxdesktop
