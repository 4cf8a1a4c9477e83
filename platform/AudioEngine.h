// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "base/Error.h"

namespace tarvik::platform {

/// The shape of an audio stream.
struct AudioFormat {
    /// Frames per second, in hertz; 0 when there is no input.
    double sampleRate = 0;
    std::uint32_t channelCount = 0;
};

/// One delivered buffer of audio. Valid only during the call that delivers it.
struct AudioPcmBuffer {
    /// One array of `frameLength` samples (nominally −1 to 1) per channel. Null when the buffer
    /// holds no float samples.
    const float* const* floatChannelData = nullptr;
    std::uint32_t frameLength = 0;
    AudioFormat format;
};

/// Receives the audio of a tap, one buffer at a time, on the engine's delivery thread. The block
/// must not block and must not call the engine.
using AudioTapBlock = std::function<void(const AudioPcmBuffer&)>;

/// The engine's connection to the default microphone. The microphone is bus 0; there are no other
/// buses. Main thread only.
class AudioInputNode {
  public:
    virtual ~AudioInputNode() = default;

    /// The microphone's current format; the sample rate is 0 when there is no microphone. A real
    /// backend also opens the microphone at this call, so that a start() soon after is quick.
    virtual AudioFormat inputFormatForBus(std::uint32_t bus) = 0;

    /// Delivers the microphone's audio to `block` while the engine runs, in buffers of about
    /// `bufferSize` frames. macOS makes them 100 to 400 ms long. At most one tap per bus.
    virtual void installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                 const AudioFormat& format, AudioTapBlock block) = 0;
    /// Ends the deliveries; allowed without a tap. Audio that does not fill a whole buffer is
    /// dropped. The block is not called again once this call has returned.
    virtual void removeTapOnBus(std::uint32_t bus) = 0;
};

/// Captures the default microphone, never the monitor of a loudspeaker. Main thread only.
///
/// No call waits for the sound server, except inside the system's own engine on macOS. Destruction
/// stops the engine.
class AudioEngine {
  public:
    virtual ~AudioEngine() = default;

    /// The input node, which lives as long as the engine.
    virtual AudioInputNode& inputNode() = 0;
    /// Prepares what start() needs, so that start() is quick. Optional.
    virtual void prepare() = 0;
    /// Begins delivery. The error says why delivery cannot begin. A microphone that fails later,
    /// even while it is still being opened, is reported as a configuration change.
    virtual std::optional<Error> start() = 0;
    /// Ends delivery; allowed at any time. The tap stays installed for the next start().
    virtual void stop() = 0;
};

/// The handle of a registered observer. Dropping the handle removes the observer. Main thread only.
class AudioObservation {
  public:
    virtual ~AudioObservation() = default;
};

/// Makes audio engines and reports when an engine has to be replaced. Main thread only.
class AudioService {
  public:
    virtual ~AudioService() = default;

    virtual std::unique_ptr<AudioEngine> makeEngine() = 0;

    /// Calls `handler` on the main thread after each change that makes a running engine useless.
    ///
    /// Such changes are: another default microphone, another rate that the engine cannot follow, a
    /// microphone that was unplugged, plugged in, suspended or has failed, a sound server that has
    /// ended or is back. A burst of changes is one call.
    [[nodiscard]] virtual std::unique_ptr<AudioObservation> observeConfigurationChange(
        std::function<void()> handler) = 0;
};

}  // namespace tarvik::platform
