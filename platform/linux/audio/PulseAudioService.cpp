// SPDX-License-Identifier: MIT

#include "platform/linux/audio/PulseAudioService.h"

#include <utility>

#include "base/OneShot.h"
#include "platform/linux/audio/ConfigurationChanges.h"
#include "platform/linux/audio/PulseAudioEngine.h"
#include "platform/linux/audio/PulseServer.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds requestTimeout{2};

}  // namespace

PulseAudioService::PulseAudioService(platform::MainQueue& mainQueue, platform::Log& log)
    : mainQueue_(mainQueue),
      changes_(std::make_shared<ConfigurationChanges>(mainQueue)),
      server_(std::make_shared<PulseServer>(changes_, log)) {}

PulseAudioService::~PulseAudioService() = default;

std::unique_ptr<platform::AudioEngine> PulseAudioService::makeEngine() {
    return std::make_unique<PulseAudioEngine>(server_);
}

std::unique_ptr<platform::AudioObservation> PulseAudioService::observeConfigurationChange(
    std::function<void()> handler) {
    return changes_->observe(std::move(handler));
}

void PulseAudioService::whenFirstKnown(std::function<void()> handler) {
    const auto lock = server_->lock();
    server_->whenFirstKnown(std::move(handler));
}

int PulseAudioService::authorizationStatusForAudio() {
    return server_->authorizationStatus();
}

void PulseAudioService::requestAccessForAudio(std::function<void(bool granted)> handler) {
    const auto answer = std::make_shared<OneShot<bool>>();
    answer->store(std::move(handler));
    mainQueue_.asyncAfter(requestTimeout, [answer] {
        if (const auto callback = answer->take()) {
            callback(false);
        }
    });
    const auto lock = server_->lock();
    server_->requestAuthorization(answer);
}

}  // namespace tarvik::linuxdesktop
