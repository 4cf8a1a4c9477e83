#include "platform/Platform.h"

#include <cstdlib>
#include <utility>

namespace tarvik::platform {

namespace {
Platform* currentPlatform = nullptr;
}

Platform::Platform() {
    if (currentPlatform != nullptr) {
        std::abort();
    }
    currentPlatform = this;
}

Platform::~Platform() {
    releaseSharedInstances();
    currentPlatform = nullptr;
}

void Platform::releaseSharedInstances() {
    while (!sharedInstances_.empty()) {
        const SharedInstance last = std::move(sharedInstances_.back());
        sharedInstances_.pop_back();
    }
}

Platform& Platform::current() {
    if (currentPlatform == nullptr) {
        std::abort();
    }
    return *currentPlatform;
}

void* Platform::sharedInstance(const void* type) const {
    for (const SharedInstance& shared : sharedInstances_) {
        if (shared.type == type) {
            return shared.instance.get();
        }
    }
    return nullptr;
}

}  // namespace tarvik::platform
