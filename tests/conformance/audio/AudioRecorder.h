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

/// Uses an audio service as the application does: reads the format, installs a tap of 2048 frames,
/// starts, and on a configuration change does the same again with a new engine. Main thread, save
/// where it says otherwise.
class AudioRecorder {
  public:
    static constexpr std::uint32_t bufferSize = 2048;

    explicit AudioRecorder(platform::AudioService& service);

    /// An error when there is no microphone or the engine says so.
    std::optional<Error> start();
    /// Keeps the engine that it has, whatever changes.
    void ignoreChanges() { wantsToRun_ = false; }
    void removeTap();
    void stop();
    /// What the engine answers now.
    platform::AudioFormat format() { return engine_->inputNode().inputFormatForBus(0); }
    platform::AudioEngine& engine() { return *engine_; }

    /// Configuration changes so far.
    int changes() const { return changes_; }
    /// Buffers delivered so far. Any thread.
    std::size_t buffers() const;
    /// Buffers that came inside a call of removeTap(), on its thread.
    int buffersOfRemovals() const { return buffersOfRemovals_; }
    /// Lengths of the buffers delivered so far.
    std::vector<std::uint32_t> lengths() const;
    /// The format of the newest buffer.
    platform::AudioFormat lastFormat() const;
    /// Every sample delivered so far on `channel`, to full scale ±32768.
    std::vector<std::int16_t> heard(std::size_t channel) const;
    void forget();

  private:
    struct Buffer {
        platform::AudioFormat format;
        std::vector<std::vector<float>> channels;
    };

    void tapped(const platform::AudioPcmBuffer& buffer);
    void configurationChanged();

    platform::AudioService& service_;
    // Before the engine, whose thread fills them until it is gone.
    mutable std::mutex mutex_;
    std::vector<Buffer> buffers_;
    /// The thread that is inside removeTap().
    std::atomic<std::thread::id> remover_;
    std::atomic<int> buffersOfRemovals_ = 0;
    std::unique_ptr<platform::AudioEngine> engine_;
    std::unique_ptr<platform::AudioObservation> observation_;
    bool wantsToRun_ = false;
    int changes_ = 0;
};

}  // namespace tarvik::tests
