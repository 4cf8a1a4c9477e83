#pragma once

#include "platform/AudioEngine.h"
#include "platform/MainQueue.h"

namespace tarvik::macdesktop {

/// Audio by AVAudioEngine. Main thread only.
class EngineAudioService final : public platform::AudioService {
  public:
    /// `mainQueue` outlives the service and its observations.
    explicit EngineAudioService(platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}

    std::unique_ptr<platform::AudioEngine> makeEngine() override;
    [[nodiscard]] std::unique_ptr<platform::AudioObservation> observeConfigurationChange(
        std::function<void()> handler) override;

  private:
    platform::MainQueue& mainQueue_;
};

}  // namespace tarvik::macdesktop
