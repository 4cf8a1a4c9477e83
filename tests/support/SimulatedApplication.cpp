// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedApplication.h"

#include <cstdlib>
#include <string>

namespace tarvik::simulated {

void SimulatedApplication::setDelegate(std::shared_ptr<platform::ApplicationDelegate> delegate) {
    journal_.add("setDelegate");
    delegate_ = std::move(delegate);
}

void SimulatedApplication::setActivationPolicy(platform::ActivationPolicy policy) {
    journal_.add("setActivationPolicy " + std::to_string(static_cast<int>(policy)));
}

int SimulatedApplication::run() {
    journal_.add("run");
    if (delegate_ && !isTerminated_) {
        time_.async([this] { delegate_->applicationDidFinishLaunching({}); });
    }
    while (!isTerminated_) {
        if (!time_.runNext() && !time_.runUntil([this] { return time_.waitingBlocks() > 0; })) {
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}

void SimulatedApplication::terminate() {
    journal_.add("terminate");
    isTerminated_ = true;
}

bool SimulatedApplication::reopen(bool hasVisibleWindows) {
    return delegate_->applicationShouldHandleReopen(hasVisibleWindows);
}

}  // namespace tarvik::simulated
