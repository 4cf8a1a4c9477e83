// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/AudioEngine.h"
#include "platform/CaptureAuthorization.h"

namespace tarvik::tests {

/// The environment of an audio service: the hardware, the sound server and the main thread's time.
///
/// A new environment has a server and no microphone.
class AudioWorld {
  public:
    virtual ~AudioWorld() = default;

    virtual platform::AudioService& service() = 0;
    virtual platform::CaptureAuthorization& authorization() = 0;

    /// Runs the main queue until `condition` holds; false when `timeout` passes first.
    virtual bool runUntil(const std::function<bool()>& condition,
                          std::chrono::milliseconds timeout) = 0;
    /// Runs the main queue for the whole `interval`.
    void runFor(std::chrono::milliseconds interval) {
        runUntil([] { return false; }, interval);
    }
    /// Runs the main queue for as long as an unwanted event would need to arrive.
    void settle() { runFor(std::chrono::milliseconds(400)); }

    /// Whether the environment is without a microphone, as a new one should be. A real machine may
    /// have one of its own.
    virtual bool isWithoutMicrophone() { return true; }
    /// Adds a microphone, which delivers silence, and makes it the default source.
    virtual void plug(std::uint32_t sampleRate, std::uint32_t channelCount) = 0;
    /// Removes every microphone.
    virtual void unplug() = 0;
    /// Plays `samples` (interleaved, full scale at ±32768) into the default microphone, then
    /// silence.
    virtual void speak(const std::vector<std::int16_t>& samples) = 0;
    virtual void suspend(bool isSuspended) = 0;
    virtual void killServer() = 0;
    /// Starts the server again, with a mono default microphone of `sampleRate` hertz.
    virtual void restartServer(std::uint32_t sampleRate) = 0;
};

struct AudioWorldMaker {
    std::string name;
    std::function<std::unique_ptr<AudioWorld>()> make;
};

AudioWorldMaker simulatedAudioWorld();
/// The world of the backend for which the program is built.
AudioWorldMaker realAudioWorld();

inline auto everyAudioWorld() {
    return testing::Values(simulatedAudioWorld(), realAudioWorld());
}

inline std::string nameOf(const testing::TestParamInfo<AudioWorldMaker>& info) {
    return info.param.name;
}

}  // namespace tarvik::tests
