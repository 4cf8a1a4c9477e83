// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "audio/PcmConversion.h"
#include "base/AtomicReference.h"
#include "platform/AudioEngine.h"
#include "platform/Log.h"

namespace tarvik {

/// Captures the default microphone as PCM chunks, one per buffer of the audio engine. Replaces the
/// engine when the audio configuration changes during a recording.
///
/// Main thread only. The chunk callback alone runs on the engine's delivery thread, one chunk at a
/// time. The owner calls stop() before destruction, because destruction neither removes the tap nor
/// calls the engine's stop().
class AudioCapture {
  public:
    using ChunkCallback = std::function<void(PcmChunk)>;

    /// The captured bus of the engine's input node.
    static constexpr std::uint32_t inputBus = 0;

    AudioCapture(platform::AudioService& service, platform::Log& log);
    AudioCapture(const AudioCapture&) = delete;
    AudioCapture& operator=(const AudioCapture&) = delete;

    /// The current engine. Chunks have the sample rate of its input format.
    platform::AudioEngine& engine() { return *engine_; }

    /// Begins to deliver chunks to `onPcm`, which may be empty. Does nothing while the capture
    /// runs. A failure is only logged: no chunk comes, and the callback is kept until the next
    /// start() or destruction.
    void start(ChunkCallback onPcm);

    /// Ends the capture and releases the callback. No chunk comes after this call. Does nothing
    /// when the capture does not run.
    void stop();

  private:
    /// In frames.
    static constexpr std::uint32_t tapBufferSize = 2048;

    void attachAndStart();
    void detach();
    void handleConfigurationChange();

    std::unique_ptr<platform::AudioEngine> engine_;
    bool isRunning_ = false;
    /// The delivery thread reads this cell for every buffer. The tap holds the cell and not the
    /// capture, so that the delivery thread never destroys the capture.
    std::shared_ptr<AtomicReference<const ChunkCallback>> currentOnPCM_;

    platform::AudioService& service_;
    platform::Log& log_;
    std::unique_ptr<platform::AudioObservation> configurationObservation_;
};

}  // namespace tarvik
