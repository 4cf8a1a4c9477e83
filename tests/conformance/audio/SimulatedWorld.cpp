// SPDX-License-Identifier: MIT

#include "tests/conformance/audio/SimulatedWorld.h"

#include "tests/conformance/audio/AudioRecorder.h"

namespace tarvik::tests {

SimulatedAudioWorld::SimulatedAudioWorld() {
    change({}, platform::AuthorizationStatus::denied);
    time_.runUntilIdle();
}

bool SimulatedAudioWorld::runUntil(const std::function<bool()>& condition,
                                   std::chrono::milliseconds timeout) {
    const TimePoint deadline = time_.now() + timeout;
    while (!condition()) {
        if (time_.now() >= deadline) {
            return false;
        }
        time_.advance(Seconds(0.05));
        deliverBuffer();
    }
    return true;
}

void SimulatedAudioWorld::deliverBuffer() {
    if (isSuspended_ || !(format_.sampleRate > 0)) {
        return;
    }
    std::vector<std::vector<float>> channels(format_.channelCount,
                                             std::vector<float>(AudioRecorder::bufferSize));
    for (std::size_t frame = 0; frame < AudioRecorder::bufferSize && !spoken_.empty(); ++frame) {
        for (std::vector<float>& channel : channels) {
            channel[frame] = spoken_.front();
            spoken_.pop_front();
        }
    }
    audio_.deliver(channels);
}

void SimulatedAudioWorld::change(const platform::AudioFormat& format,
                                 platform::AuthorizationStatus status) {
    format_ = format;
    authorization_.status = static_cast<int>(status);
    audio_.setInputFormat(format);
    audio_.changeConfiguration();
}

void SimulatedAudioWorld::plug(std::uint32_t sampleRate, std::uint32_t channelCount) {
    isSuspended_ = false;
    change({static_cast<double>(sampleRate), channelCount},
           platform::AuthorizationStatus::authorized);
}

void SimulatedAudioWorld::unplug() {
    change({}, platform::AuthorizationStatus::denied);
}

void SimulatedAudioWorld::speak(const std::vector<std::int16_t>& samples) {
    for (const std::int16_t sample : samples) {
        spoken_.push_back(static_cast<float>(sample) / 32768.0F);
    }
}

void SimulatedAudioWorld::suspend(bool isSuspended) {
    isSuspended_ = isSuspended;
    audio_.changeConfiguration();
}

void SimulatedAudioWorld::killServer() {
    change({}, platform::AuthorizationStatus::notDetermined);
}

void SimulatedAudioWorld::restartServer(std::uint32_t sampleRate) {
    plug(sampleRate, 1);
}

AudioWorldMaker simulatedAudioWorld() {
    return {"Simulated", [] { return std::make_unique<SimulatedAudioWorld>(); }};
}

}  // namespace tarvik::tests
