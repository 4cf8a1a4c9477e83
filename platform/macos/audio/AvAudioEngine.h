#pragma once

#import <AVFAudio/AVFAudio.h>

#include "platform/AudioEngine.h"
#include "platform/macos/audio/ConfigurationChanges.h"
#include "platform/macos/audio/TapGate.h"

namespace tarvik::macdesktop {

/// An AVAudioEngine and its input node. What the engine has collected but not delivered when the
/// tap is removed is lost: the engine keeps it. Calls may wait for the system's audio server. Main
/// thread only.
///
/// From start() to stop() the system knows that the process works for its user and does not slow it
/// down, as it otherwise does with one that has no window and plays nothing.
class AvAudioEngine final : public platform::AudioEngine, public platform::AudioInputNode {
  public:
    /// `changes` hears of this engine for as long as it lives.
    explicit AvAudioEngine(std::shared_ptr<ConfigurationChanges> changes);
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
    void beginActivity();
    void endActivity();

    std::shared_ptr<ConfigurationChanges> changes_;
    AVAudioEngine* engine_;
    /// The one that was answered last, for the tap that is installed with it.
    AVAudioFormat* inputFormat_ = nil;
    /// The node that has the tap.
    AVAudioInputNode* tappedNode_ = nil;
    /// The engine's tap block holds it as well. Empty while there is no tap.
    std::shared_ptr<TapGate> gate_;
    /// Why the last tap that was asked for is not there or the engine is not ready; the start
    /// reports it.
    std::optional<Error> failure_;
    /// Nil while nothing is captured.
    id<NSObject> activity_ = nil;
};

}  // namespace tarvik::macdesktop
