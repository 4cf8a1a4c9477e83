#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "audio/PcmConversion.h"
#include "base/AtomicReference.h"
#include "platform/AudioEngine.h"
#include "platform/Log.h"

namespace tarvik {

/// Turns the default microphone into PCM chunks, one for every buffer that the audio engine
/// delivers, and rebuilds its engine when the audio configuration changes during a recording.
///
/// Main thread only, but for the chunk callback, which runs on the engine's delivery thread, one
/// chunk at a time. stop() comes before destruction, which neither removes the tap nor stops the
/// engine by itself.
class AudioCapture {
  public:
    using ChunkCallback = std::function<void(PcmChunk)>;

    /// The bus of the engine's input node that is captured.
    static constexpr std::uint32_t inputBus = 0;

    AudioCapture(platform::AudioService& service, platform::Log& log);
    AudioCapture(const AudioCapture&) = delete;
    AudioCapture& operator=(const AudioCapture&) = delete;

    /// The engine of the moment; its input format is what chunks will have.
    platform::AudioEngine& engine() { return *engine_; }

    /// Begins to deliver chunks to `onPcm`, which may be empty. While capture is running the
    /// callback stays as it is. A failure is only logged, and no chunk comes; the callback is kept
    /// then until the next start() or destruction.
    void start(ChunkCallback onPcm);

    /// Ends the capture and forgets the callback; no chunk comes after that. Nothing happens while
    /// no capture runs.
    void stop();

  private:
    /// In frames.
    static constexpr std::uint32_t tapBufferSize = 2048;

    void attachAndStart();
    void detach();
    void handleConfigurationChange();

    std::unique_ptr<platform::AudioEngine> engine_;
    bool isRunning_ = false;
    /// Read by the delivery thread for every buffer. The tap holds the cell, not the capture, so
    /// that the capture is never destroyed on the delivery thread.
    std::shared_ptr<AtomicReference<const ChunkCallback>> currentOnPCM_;

    platform::AudioService& service_;
    platform::Log& log_;
    std::unique_ptr<platform::AudioObservation> configurationObservation_;
};

}  // namespace tarvik
