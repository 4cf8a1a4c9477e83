// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "base/Error.h"
#include "platform/AudioEngine.h"

namespace tarvik::tests {

/// Uses an audio service as the application does: reads the format, installs a tap of 2048 frames
/// and starts. After a configuration change the recorder does the same with a new engine. Main
/// thread, unless an operation says otherwise.
class AudioRecorder {
  public:
    static constexpr std::uint32_t bufferSize = 2048;

    explicit AudioRecorder(platform::AudioService& service);

    /// Installs the tap and starts the engine. An error when there is no microphone, or the error
    /// of the engine.
    std::optional<Error> start();
    /// Keeps the present engine after configuration changes.
    void ignoreChanges() { isRecordingWanted_ = false; }
    void removeTap();
    void stop();
    /// The engine's present input format.
    platform::AudioFormat format() { return engine_->inputNode().inputFormatForBus(0); }
    platform::AudioEngine& engine() { return *engine_; }

    /// The number of configuration changes so far.
    int changes() const { return changes_; }
    /// The number of buffers delivered since forget(). Any thread.
    std::size_t buffers() const;
    /// The number of buffers delivered inside removeTap(), on its thread.
    int buffersDuringRemoval() const { return buffersDuringRemoval_; }
    /// The lengths of these buffers.
    std::vector<std::uint32_t> lengths() const;
    /// The format of the last buffer.
    platform::AudioFormat lastFormat() const;
    /// The samples of these buffers on `channel`, with full scale at ±32768.
    std::vector<std::int16_t> heard(std::size_t channel) const;
    /// Drops the delivered buffers.
    void forget();

  private:
    struct Buffer {
        platform::AudioFormat format;
        std::vector<std::vector<float>> channels;
    };

    void tapped(const platform::AudioPcmBuffer& buffer);
    void configurationChanged();

    platform::AudioService& service_;
    // Declared before the engine, whose thread adds buffers until the engine's destruction.
    mutable std::mutex mutex_;
    std::vector<Buffer> buffers_;
    /// The thread inside removeTap(), if there is one.
    std::atomic<std::thread::id> removingThread_;
    std::atomic<int> buffersDuringRemoval_ = 0;
    std::unique_ptr<platform::AudioEngine> engine_;
    std::unique_ptr<platform::AudioObservation> observation_;
    bool isRecordingWanted_ = false;
    int changes_ = 0;
};

}  // namespace tarvik::tests
