// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedPlatform.h"

#include <utility>

namespace tarvik::simulated {

SimulatedPlatform::SimulatedPlatform(UserDefaultsContents defaults)
    : userDefaults_(std::move(defaults)) {}

// Releases everything that holds objects of the core, while all services still exist.
SimulatedPlatform::~SimulatedPlatform() {
    releaseSharedInstances();
    application_.releaseDelegate();
    workspace_.releaseObservers();
    webSockets_.abandon();
    time_.clear();
}

}  // namespace tarvik::simulated
