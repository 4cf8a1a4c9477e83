// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedAudio.h"

#include <algorithm>

namespace tarvik::simulated {

std::unique_ptr<platform::AudioEngine> SimulatedAudio::makeEngine() {
    journal_.add("makeEngine");
    auto record = std::make_shared<SimulatedAudioEngineRecord>();
    {
        const std::lock_guard lock(mutex_);
        engines_.push_back(record);
    }
    SimulatedAudioEngine::Context context;
    context.inputFormat = [this] { return inputFormat(); };
    context.startFailure = [this]() -> std::optional<Error> {
        const std::lock_guard lock(mutex_);
        if (!startFailure_ && !(inputFormat_.sampleRate > 0)) {
            return Error{0, "there is no microphone"};
        }
        return startFailure_;
    };
    context.onCall = [this](const std::string& call) { journal_.add("audio " + call); };
    return std::make_unique<SimulatedAudioEngine>(std::move(context), std::move(record));
}

std::unique_ptr<platform::AudioObservation> SimulatedAudio::observeConfigurationChange(
    std::function<void()> handler) {
    journal_.add("observeConfigurationChange");
    return observers_.add(std::move(handler));
}

std::vector<std::shared_ptr<SimulatedAudioEngineRecord>> SimulatedAudio::engines() const {
    const std::lock_guard lock(mutex_);
    return engines_;
}

platform::AudioFormat SimulatedAudio::inputFormat() const {
    const std::lock_guard lock(mutex_);
    return inputFormat_;
}

void SimulatedAudio::setInputFormat(const platform::AudioFormat& format) {
    const std::lock_guard lock(mutex_);
    inputFormat_ = format;
}

void SimulatedAudio::setStartFailure(std::optional<Error> failure) {
    const std::lock_guard lock(mutex_);
    startFailure_ = std::move(failure);
}

void SimulatedAudio::changeConfiguration() {
    const std::lock_guard lock(mutex_);
    if (!isChangePending_) {
        isChangePending_ = true;
        time_.async([this] { notifyObservers(); });
    }
}

void SimulatedAudio::notifyObservers() {
    {
        const std::lock_guard lock(mutex_);
        isChangePending_ = false;
    }
    observers_.call();
}

bool SimulatedAudio::deliver(const platform::AudioPcmBuffer& buffer) {
    bool taken = false;
    for (const auto& engine : engines()) {
        taken = engine->deliver(buffer) || taken;
    }
    return taken;
}

bool SimulatedAudio::deliver(const std::vector<std::vector<float>>& channels) {
    return deliver(channels, static_cast<std::uint32_t>(channels.size()));
}

bool SimulatedAudio::deliver(const std::vector<std::vector<float>>& channels,
                             std::uint32_t channelCount) {
    std::vector<const float*> arrays;
    arrays.reserve(channels.size());
    for (const std::vector<float>& channel : channels) {
        arrays.push_back(channel.data());
    }
    platform::AudioPcmBuffer buffer;
    buffer.floatChannelData = arrays.data();
    buffer.frameLength = static_cast<std::uint32_t>(channels.front().size());
    buffer.format = {inputFormat().sampleRate, channelCount};
    return deliver(buffer);
}

bool SimulatedAudio::deliverWithoutFloatSamples(std::uint32_t frames) {
    platform::AudioPcmBuffer buffer;
    buffer.frameLength = frames;
    buffer.format = {inputFormat().sampleRate, 1};
    return deliver(buffer);
}

}  // namespace tarvik::simulated
