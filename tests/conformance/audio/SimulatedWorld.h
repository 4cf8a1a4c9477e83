// SPDX-License-Identifier: MIT
#pragma once

#include <deque>

#include "tests/conformance/audio/AudioWorld.h"
#include "tests/support/Journal.h"
#include "tests/support/SimulatedAudio.h"
#include "tests/support/SimulatedCaptureAuthorization.h"
#include "tests/support/SimulatedTime.h"

namespace tarvik::tests {

/// The simulated audio service, in virtual time.
class SimulatedAudioWorld : public AudioWorld {
  public:
    SimulatedAudioWorld();

    platform::AudioService& service() override { return audio_; }
    platform::CaptureAuthorization& authorization() override { return authorization_; }
    bool runUntil(const std::function<bool()>& condition,
                  std::chrono::milliseconds timeout) override;
    void plug(std::uint32_t sampleRate, std::uint32_t channelCount) override;
    void unplug() override;
    void speak(const std::vector<std::int16_t>& samples) override;
    void suspend(bool isSuspended) override;
    void killServer() override;
    void restartServer(std::uint32_t sampleRate) override;

  private:
    void change(const platform::AudioFormat& format, platform::AuthorizationStatus status);
    void deliverBuffer();

    simulated::Journal journal_;
    simulated::SimulatedTime time_;
    simulated::SimulatedAudio audio_{time_, journal_};
    simulated::SimulatedCaptureAuthorization authorization_{journal_};
    platform::AudioFormat format_;
    bool isSuspended_ = false;
    std::deque<float> spoken_;
};

}  // namespace tarvik::tests
