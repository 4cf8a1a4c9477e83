// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/AudioEngine.h"

namespace tarvik::simulated {

/// The state and the calls of one engine. The record outlives the engine, so that a test can
/// inspect a destroyed engine. Any thread.
class SimulatedAudioEngineRecord {
  public:
    /// The calls in order: "inputFormat 0", "installTap 0 2048 48000", "prepare", "start",
    /// "removeTap 0", "stop". The first number is the bus.
    std::vector<std::string> calls() const;
    bool isRunning() const { return isRunning_; }
    /// The block of the tap, empty without a tap. A test keeps the block to call it after the end
    /// of the engine, like a delivery that is already under way.
    platform::AudioTapBlock tap() const;
    /// Whether the engine still exists.
    bool isAlive() const { return isAlive_; }

    /// Delivers a buffer to the tap, on the calling thread; false when the engine does not run or
    /// has no tap.
    bool deliver(const platform::AudioPcmBuffer& buffer);

  private:
    friend class SimulatedAudioEngine;

    void addCall(std::string call);
    void setTap(platform::AudioTapBlock block);

    mutable std::mutex mutex_;
    std::vector<std::string> calls_;
    // Held while the tap's block runs, so that the block does not run any more once the tap is
    // removed.
    mutable std::mutex tapMutex_;
    platform::AudioTapBlock tap_;
    std::atomic<bool> isRunning_ = false;
    std::atomic<bool> isAlive_ = true;
};

/// An engine that captures the buffers of a test.
class SimulatedAudioEngine final : public platform::AudioEngine, public platform::AudioInputNode {
  public:
    /// What the engine needs from the simulated audio service.
    struct Context {
        std::function<platform::AudioFormat()> inputFormat;
        std::function<std::optional<Error>()> startFailure;
        std::function<void(const std::string&)> onCall;
    };

    SimulatedAudioEngine(Context context, std::shared_ptr<SimulatedAudioEngineRecord> record);
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
    void recordCall(const std::string& call);

    Context context_;
    std::shared_ptr<SimulatedAudioEngineRecord> record_;
};

}  // namespace tarvik::simulated
