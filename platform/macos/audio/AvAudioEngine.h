// SPDX-License-Identifier: MIT
#pragma once

#import <AVFAudio/AVFAudio.h>

#include "platform/AudioEngine.h"
#include "platform/macos/audio/ConfigurationChanges.h"
#include "platform/macos/audio/TapGate.h"

namespace tarvik::macdesktop {

/// An AVAudioEngine and its input node. Audio that the engine has not delivered when the tap is
/// removed is lost, because the engine keeps that audio. Calls may wait for the system's audio
/// server. Main thread only.
///
/// An AVAudioEngine keeps its microphone for life. A new one takes its place when the format is
/// read without a tap after a configuration change, a failed start, or a format of 0 Hz.
///
/// From start() to stop() an activity keeps the system from slowing the process down. Without the
/// activity, the system slows down a process that has no window and plays nothing.
class AvAudioEngine final : public platform::AudioEngine, public platform::AudioInputNode {
  public:
    /// Registers the engine with `changes` until destruction.
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
    void makeEngine();
    /// Stops the AVAudioEngine and releases it two seconds later. The system may still be inside
    /// the listener that has reported a change, and crashes there when the AVAudioEngine is gone.
    void retireEngine();
    std::optional<Error> startEngine();
    void beginActivity();
    void endActivity();

    std::shared_ptr<ConfigurationChanges> changes_;
    AVAudioEngine* engine_ = nil;
    /// The last answer of inputFormatForBus(), for the tap.
    AVAudioFormat* inputFormat_ = nil;
    /// The node that has the tap; nil without a tap.
    AVAudioInputNode* tappedNode_ = nil;
    /// Shared with the engine's tap block. Empty without a tap.
    std::shared_ptr<TapGate> gate_;
    /// Why the last tap was not installed or the engine was not prepared; start() returns this
    /// error.
    std::optional<Error> pendingError_;
    /// Nil while the engine is stopped.
    id<NSObject> activity_ = nil;
};

}  // namespace tarvik::macdesktop
