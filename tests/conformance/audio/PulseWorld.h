#pragma once

#include <memory>
#include <string>

#include "platform/linux/audio/PulseAudioService.h"
#include "tests/conformance/audio/AudioWorld.h"
#include "tests/linux/audio/AudioMainQueue.h"
#include "tests/linux/audio/PipeMicrophone.h"
#include "tests/linux/audio/SoundServer.h"
#include "tests/support/Journal.h"
#include "tests/support/SimulatedLog.h"

namespace tarvik::tests {

/// A PulseAudio of its own whose microphones are pipes.
class PulseWorld : public AudioWorld {
  public:
    PulseWorld();
    ~PulseWorld() override;

    platform::AudioService& service() override { return *service_; }
    platform::CaptureAuthorization& authorization() override { return *service_; }
    bool runUntil(const std::function<bool()>& condition, Seconds limit) override;
    void plug(std::uint32_t sampleRate, std::uint32_t channelCount) override;
    void unplug() override;
    void speak(const std::vector<std::int16_t>& samples) override;
    void suspend(bool isSuspended) override;
    void killServer() override;
    void restartServer(std::uint32_t sampleRate) override;

    SoundServer& server() { return server_; }
    /// How many streams record on the server, corked ones too.
    std::size_t openStreams() const;

  private:
    std::string nextMicrophone();
    std::string pipeSource(std::uint32_t sampleRate, std::uint32_t channelCount) const;
    void turnOn(std::uint32_t sampleRate, std::uint32_t channelCount);

    SoundServer server_;
    AudioMainQueue mainQueue_;
    simulated::Journal journal_;
    simulated::SimulatedLog log_{journal_};
    std::unique_ptr<linuxdesktop::PulseAudioService> service_;
    std::string microphone_;
    int microphones_ = 0;
    std::unique_ptr<PipeMicrophone> hardware_;
};

}  // namespace tarvik::tests
