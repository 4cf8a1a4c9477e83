// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/Observers.h"
#include "platform/AudioEngine.h"
#include "tests/support/Journal.h"
#include "tests/support/SimulatedAudioEngine.h"
#include "tests/support/SimulatedTime.h"

namespace tarvik::simulated {

/// An audio service whose microphone a test plugs in, unplugs and speaks into.
class SimulatedAudio final : public platform::AudioService {
  public:
    SimulatedAudio(SimulatedTime& time, Journal& journal) : time_(time), journal_(journal) {}

    std::unique_ptr<platform::AudioEngine> makeEngine() override;
    [[nodiscard]] std::unique_ptr<platform::AudioObservation> observeConfigurationChange(
        std::function<void()> handler) override;

    /// Sets the format of the default microphone, without notifying the observers. Any thread.
    void setInputFormat(const platform::AudioFormat& format);
    /// Removes the microphone, without notifying the observers. Any thread.
    void removeInput() { setInputFormat({0, 0}); }
    /// Notifies the observers through the main queue. Several calls in one turn are one burst.
    void changeConfiguration();

    /// Sets the result of starting an engine. Without a microphone the start fails in any case.
    void setStartFailure(std::optional<Error> failure);

    /// The records of all engines so far, from first to last, including destroyed ones. Any thread.
    std::vector<std::shared_ptr<SimulatedAudioEngineRecord>> engines() const;
    std::shared_ptr<SimulatedAudioEngineRecord> lastEngine() const { return engines().back(); }
    std::size_t observers() const { return observers_.count(); }

    /// Delivers one buffer to every running engine with a tap, on the calling thread. `channels`
    /// has one array of samples per channel, all of the same length. False when no engine took it.
    bool deliver(const std::vector<std::vector<float>>& channels);
    /// As above, with a buffer whose format claims `channelCount` channels.
    bool deliver(const std::vector<std::vector<float>>& channels, std::uint32_t channelCount);
    /// As above, with a buffer that holds no float samples.
    bool deliverWithoutFloatSamples(std::uint32_t frames);

  private:
    platform::AudioFormat inputFormat() const;
    bool deliver(const platform::AudioPcmBuffer& buffer);
    void notifyObservers();

    SimulatedTime& time_;
    Journal& journal_;
    mutable std::mutex mutex_;
    platform::AudioFormat inputFormat_{48000, 1};
    std::optional<Error> startFailure_;
    std::vector<std::shared_ptr<SimulatedAudioEngineRecord>> engines_;
    Observers<platform::AudioObservation> observers_;
    bool isChangePending_ = false;
};

}  // namespace tarvik::simulated
