// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "platform/linux/audio/PulseAudioService.h"
#include "tests/conformance/audio/AudioWorld.h"
#include "tests/linux/audio/PipeMicrophone.h"
#include "tests/linux/audio/SoundServer.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

/// A PulseAudio server of its own, whose microphones are pipes.
class PulseWorld : public AudioWorld {
  public:
    PulseWorld();
    ~PulseWorld() override;

    platform::AudioService& service() override { return *service_; }
    platform::CaptureAuthorization& authorization() override { return *service_; }
    bool runUntil(const std::function<bool()>& condition,
                  std::chrono::milliseconds timeout) override;
    void plug(std::uint32_t sampleRate, std::uint32_t channelCount) override;
    void unplug() override;
    void speak(const std::vector<std::int16_t>& samples) override;
    void suspend(bool isSuspended) override;
    void killServer() override;
    void restartServer(std::uint32_t sampleRate) override;

    SoundServer& server() { return server_; }
    const RecordingLog& log() const { return log_; }
    /// The number of the server's recording streams, corked ones included.
    std::size_t openStreams() const;

  private:
    std::string nextMicrophone();
    std::string pipeSource(std::uint32_t sampleRate, std::uint32_t channelCount) const;
    void startMicrophone(std::uint32_t sampleRate, std::uint32_t channelCount);

    SoundServer server_;
    RealTimeQueue mainQueue_;
    RecordingLog log_;
    std::unique_ptr<linuxdesktop::PulseAudioService> service_;
    std::string microphoneName_;
    int microphoneCount_ = 0;
    std::unique_ptr<PipeMicrophone> microphone_;
};

}  // namespace tarvik::tests
