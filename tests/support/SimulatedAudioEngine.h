#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/AudioEngine.h"

namespace tarvik::simulated {

/// What an engine is doing and what it was asked to do; it outlives the engine, so that a test can
/// look at one that is gone. Any thread.
class SimulatedAudioEngineRecord {
  public:
    /// "inputFormat 0", "installTap 0 2048 48000", "prepare", "start", "removeTap 0", "stop", in
    /// order; the first number is the bus.
    std::vector<std::string> calls() const;
    bool isRunning() const { return running_; }
    /// The block of the tap, empty when there is none: what a delivery under way still calls when
    /// the engine goes.
    platform::AudioTapBlock tap() const;
    /// False once the engine has been destroyed.
    bool isAlive() const { return alive_; }

    /// Hands a buffer to the tap, on the calling thread; false when the engine does not run or has
    /// no tap.
    bool deliver(const platform::AudioPcmBuffer& buffer);

  private:
    friend class SimulatedAudioEngine;

    void addCall(std::string call);
    void setTap(platform::AudioTapBlock block);

    mutable std::mutex mutex_;
    std::vector<std::string> calls_;
    // Held while the tap's block runs, so that a removed tap is not running any more.
    mutable std::mutex tapMutex_;
    platform::AudioTapBlock tap_;
    std::atomic<bool> running_ = false;
    std::atomic<bool> alive_ = true;
};

/// An engine that captures what a test delivers.
class SimulatedAudioEngine final : public platform::AudioEngine, public platform::AudioInputNode {
  public:
    /// What the engine asks of its surroundings.
    struct Surroundings {
        std::function<platform::AudioFormat()> inputFormat;
        std::function<std::optional<Error>()> startFailure;
        std::function<void(const std::string&)> note;
    };

    SimulatedAudioEngine(Surroundings surroundings,
                         std::shared_ptr<SimulatedAudioEngineRecord> record);
    ~SimulatedAudioEngine() override;

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
    void note(const std::string& call);

    Surroundings surroundings_;
    std::shared_ptr<SimulatedAudioEngineRecord> record_;
};

}  // namespace tarvik::simulated
