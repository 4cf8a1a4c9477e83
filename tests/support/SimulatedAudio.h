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

/// A sound system whose microphone a test plugs, unplugs and speaks into.
class SimulatedAudio final : public platform::AudioService {
  public:
    SimulatedAudio(SimulatedTime& time, Journal& journal) : time_(time), journal_(journal) {}

    std::unique_ptr<platform::AudioEngine> makeEngine() override;
    [[nodiscard]] std::unique_ptr<platform::AudioObservation> observeConfigurationChange(
        std::function<void()> handler) override;

    /// The default microphone is this one from now on; nobody is told. Any thread.
    void setInputFormat(const platform::AudioFormat& format);
    /// There is no microphone any more; nobody is told. Any thread.
    void removeInput() { setInputFormat({0, 0}); }
    /// Tells the observers, through the main queue; several calls in one turn are one burst.
    void changeConfiguration();

    /// What starting an engine answers; an engine without a microphone fails anyway.
    void setStartFailure(std::optional<Error> failure);

    /// The engines made so far, gone ones too, from first to last. Any thread.
    std::vector<std::shared_ptr<SimulatedAudioEngineRecord>> engines() const;
    std::shared_ptr<SimulatedAudioEngineRecord> lastEngine() const { return engines().back(); }
    std::size_t observers() const { return observers_.count(); }

    /// Hands one buffer to every running engine with a tap, on the calling thread: one array of
    /// samples for each channel, all of one length. False when no engine took it.
    bool deliver(const std::vector<std::vector<float>>& channels);
    /// The same, with a buffer whose format claims another number of channels.
    bool deliver(const std::vector<std::vector<float>>& channels, std::uint32_t channelCount);
    /// The same, with a buffer that does not hold float samples.
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
    bool changeIsPending_ = false;
};

}  // namespace tarvik::simulated
