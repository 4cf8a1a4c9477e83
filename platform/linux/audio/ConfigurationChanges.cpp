#include "platform/linux/audio/ConfigurationChanges.h"

#include <utility>

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds burst{0.1};

}  // namespace

void ConfigurationChanges::report() {
    if (pending_.exchange(true)) {
        return;
    }
    mainQueue_.asyncAfter(burst, [weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) {
            self->pending_ = false;
            self->observers_.call();
        }
    });
}

std::unique_ptr<platform::AudioObservation> ConfigurationChanges::observe(
    std::function<void()> handler) {
    return observers_.add(std::move(handler));
}

}  // namespace tarvik::linuxdesktop
