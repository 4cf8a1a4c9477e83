#include "tests/support/SimulatedPlatform.h"

#include <utility>

namespace tarvik::simulated {

SimulatedPlatform::SimulatedPlatform(UserDefaultsContents defaults)
    : userDefaults_(std::move(defaults)) {}

// Whatever holds objects of the core lets them go while every service still lives.
SimulatedPlatform::~SimulatedPlatform() {
    releaseSharedInstances();
    application_.releaseDelegate();
    workspace_.releaseObservers();
    webSockets_.abandon();
    time_.clear();
}

}  // namespace tarvik::simulated
