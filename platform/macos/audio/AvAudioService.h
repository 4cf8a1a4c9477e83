// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioEngine.h"
#include "platform/MainQueue.h"
#include "platform/macos/audio/ConfigurationChanges.h"

@class TarvikConfigurationObserver;

namespace tarvik::macdesktop {

/// Audio by AVAudioEngine. Main thread only.
class AvAudioService final : public platform::AudioService {
  public:
    /// `mainQueue` outlives the service, its engines and its observations.
    explicit AvAudioService(platform::MainQueue& mainQueue);
    ~AvAudioService() override;
    AvAudioService(const AvAudioService&) = delete;
    AvAudioService& operator=(const AvAudioService&) = delete;

    std::unique_ptr<platform::AudioEngine> makeEngine() override;
    [[nodiscard]] std::unique_ptr<platform::AudioObservation> observeConfigurationChange(
        std::function<void()> handler) override;

  private:
    std::shared_ptr<ConfigurationChanges> changes_;
    /// The notification centre holds its observers weakly.
    TarvikConfigurationObserver* observer_;
};

}  // namespace tarvik::macdesktop
