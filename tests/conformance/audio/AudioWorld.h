#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Time.h"
#include "platform/AudioEngine.h"
#include "platform/CaptureAuthorization.h"

namespace tarvik::tests {

/// The outside of an audio service: the hardware, the sound server, and the main thread's time.
///
/// It begins with a server and no microphone.
class AudioWorld {
  public:
    virtual ~AudioWorld() = default;

    virtual platform::AudioService& service() = 0;
    virtual platform::CaptureAuthorization& authorization() = 0;

    /// Runs the main queue until `condition` holds, or `limit` has passed; returns whether it
    /// holds.
    virtual bool runUntil(const std::function<bool()>& condition, Seconds limit) = 0;
    /// Runs the main queue for as long as a wrong event would need to show.
    void settle() {
        runUntil([] { return false; }, Seconds(0.4));
    }

    /// Makes a microphone the default one, besides those that are there; it delivers silence.
    virtual void plug(std::uint32_t sampleRate, std::uint32_t channelCount) = 0;
    /// Takes every microphone away.
    virtual void unplug() = 0;
    /// The default microphone hears `samples`, interleaved, full scale at ±32768, and then silence.
    virtual void speak(const std::vector<std::int16_t>& samples) = 0;
    virtual void suspend(bool isSuspended) = 0;
    virtual void killServer() = 0;
    /// Starts the server anew, with a default microphone of this rate, mono.
    virtual void restartServer(std::uint32_t sampleRate) = 0;
};

struct AudioWorldMaker {
    std::string name;
    std::function<std::unique_ptr<AudioWorld>()> make;
};

inline std::string nameOf(const testing::TestParamInfo<AudioWorldMaker>& info) {
    return info.param.name;
}

}  // namespace tarvik::tests
