#pragma once

#import <AVFAudio/AVFAudio.h>

#include "platform/AudioEngine.h"
#include "platform/macos/TapGate.h"

namespace tarvik::macdesktop {

/// An AVAudioEngine and its input node. What the engine has collected but not delivered when the
/// tap is removed is lost: the engine keeps it. Main thread only.
class AvAudioEngine final : public platform::AudioEngine, public platform::AudioInputNode {
  public:
    AvAudioEngine();
    ~AvAudioEngine() override;
    AvAudioEngine(const AvAudioEngine&) = delete;
    AvAudioEngine& operator=(const AvAudioEngine&) = delete;

    platform::AudioInputNode& inputNode() override { return *this; }
    void prepare() override;
    std::optional<Error> start() override;
    void stop() override;

    platform::AudioFormat inputFormatForBus(std::uint32_t bus) override;
    void installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                         const platform::AudioFormat& format,
                         platform::AudioTapBlock block) override;
    void removeTapOnBus(std::uint32_t bus) override;

  private:
    AVAudioEngine* engine_;
    /// The one that was answered last, for the tap that is installed with it.
    AVAudioFormat* inputFormat_ = nil;
    /// The engine's tap block holds it as well. Empty while there is no tap.
    std::shared_ptr<TapGate> gate_;
    /// Why the tap that was asked for is not there; the start reports it.
    std::optional<Error> tapFailure_;
};

}  // namespace tarvik::macdesktop
