#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "base/Error.h"

namespace tarvik::platform {

/// The shape of an audio stream.
struct AudioFormat {
    /// Frames a second, in hertz; 0 when there is no input.
    double sampleRate = 0;
    std::uint32_t channelCount = 0;
};

/// One delivery of audio, valid during the call that delivers it.
struct AudioPcmBuffer {
    /// One array of `frameLength` samples (nominally −1 to 1) for each channel; null when the
    /// buffer does not hold float samples.
    const float* const* floatChannelData = nullptr;
    std::uint32_t frameLength = 0;
    AudioFormat format;
};

/// Receives the audio of a tap, on the engine's delivery thread, one buffer at a time. It must not
/// block and must not call the engine.
using AudioTapBlock = std::function<void(const AudioPcmBuffer&)>;

/// The engine's connection to the default microphone, which is its bus 0; there is no other. Main
/// thread only.
class AudioInputNode {
  public:
    virtual ~AudioInputNode() = default;

    /// The format of the microphone at this moment; a sample rate of 0 when there is no microphone.
    /// A real backend gets the microphone ready when it is asked, so that a start soon after is
    /// quick.
    virtual AudioFormat inputFormatForBus(std::uint32_t bus) = 0;

    /// Delivers the microphone's audio in buffers of about `bufferSize` frames while the engine
    /// runs. At most one tap a bus.
    virtual void installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                 const AudioFormat& format, AudioTapBlock block) = 0;
    /// Ends the deliveries; allowed without a tap. What does not fill a buffer is dropped, and once
    /// this has returned, the block is not called again.
    virtual void removeTapOnBus(std::uint32_t bus) = 0;
};

/// Captures the default microphone, never a loudspeaker's monitor. Main thread only; no call waits
/// for the sound server, except within the system's own engine on macOS. Destruction stops it.
class AudioEngine {
  public:
    virtual ~AudioEngine() = default;

    /// Lives as long as the engine.
    virtual AudioInputNode& inputNode() = 0;
    /// Gets everything ready that start() needs, so that it is quick; not required.
    virtual void prepare() = 0;
    /// Begins delivery; the error says why that is impossible. A microphone that fails later, also
    /// while it is being opened, is a configuration change.
    virtual std::optional<Error> start() = 0;
    /// Ends delivery; allowed at any time. The tap stays, for another start().
    virtual void stop() = 0;
};

/// Keeps an observer registered; dropping it removes the observer. Main thread only.
class AudioObservation {
  public:
    virtual ~AudioObservation() = default;
};

/// Makes audio engines and says when they have to be made anew. Main thread only.
class AudioService {
  public:
    virtual ~AudioService() = default;

    virtual std::unique_ptr<AudioEngine> makeEngine() = 0;

    /// Calls `handler` on the main thread when the audio configuration has changed so that a
    /// running engine is no longer good: another default microphone, another rate, a microphone
    /// gone, come, suspended or failed, the sound server gone or back. One burst of such events is
    /// one call.
    [[nodiscard]] virtual std::unique_ptr<AudioObservation> observeConfigurationChange(
        std::function<void()> handler) = 0;
};

}  // namespace tarvik::platform
