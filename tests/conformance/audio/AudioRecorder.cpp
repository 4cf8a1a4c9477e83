// SPDX-License-Identifier: MIT

#include "tests/conformance/audio/AudioRecorder.h"

#include <cmath>

namespace tarvik::tests {

AudioRecorder::AudioRecorder(platform::AudioService& service)
    : service_(service),
      engine_(service.makeEngine()),
      observation_(service.observeConfigurationChange([this] { configurationChanged(); })) {}

std::optional<Error> AudioRecorder::start() {
    platform::AudioInputNode& input = engine_->inputNode();
    const platform::AudioFormat microphone = input.inputFormatForBus(0);
    isRecordingWanted_ = true;
    if (!(microphone.sampleRate > 0)) {
        return Error{0, "no microphone"};
    }
    input.installTapOnBus(0, bufferSize, microphone,
                          [this](const platform::AudioPcmBuffer& buffer) { tapped(buffer); });
    engine_->prepare();
    return engine_->start();
}

void AudioRecorder::removeTap() {
    removingThread_ = std::this_thread::get_id();
    engine_->inputNode().removeTapOnBus(0);
    removingThread_ = std::thread::id();
}

void AudioRecorder::stop() {
    isRecordingWanted_ = false;
    removeTap();
    engine_->stop();
}

void AudioRecorder::configurationChanged() {
    ++changes_;
    if (isRecordingWanted_) {
        stop();
        engine_ = service_.makeEngine();
        start();
    }
}

void AudioRecorder::tapped(const platform::AudioPcmBuffer& buffer) {
    if (std::this_thread::get_id() == removingThread_.load()) {
        ++buffersDuringRemoval_;
    }
    Buffer copy{buffer.format, {}};
    for (std::uint32_t channel = 0; channel < buffer.format.channelCount; ++channel) {
        const float* samples = buffer.floatChannelData[channel];
        copy.channels.emplace_back(samples, samples + buffer.frameLength);
    }
    const std::lock_guard lock(mutex_);
    buffers_.push_back(std::move(copy));
}

std::size_t AudioRecorder::buffers() const {
    const std::lock_guard lock(mutex_);
    return buffers_.size();
}

std::vector<std::uint32_t> AudioRecorder::lengths() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::uint32_t> lengths;
    for (const Buffer& buffer : buffers_) {
        lengths.push_back(static_cast<std::uint32_t>(buffer.channels.at(0).size()));
    }
    return lengths;
}

platform::AudioFormat AudioRecorder::lastFormat() const {
    const std::lock_guard lock(mutex_);
    return buffers_.back().format;
}

std::vector<std::int16_t> AudioRecorder::heard(std::size_t channel) const {
    const std::lock_guard lock(mutex_);
    std::vector<std::int16_t> samples;
    for (const Buffer& buffer : buffers_) {
        for (const float sample : buffer.channels.at(channel)) {
            samples.push_back(static_cast<std::int16_t>(std::lround(sample * 32768.0F)));
        }
    }
    return samples;
}

void AudioRecorder::forget() {
    const std::lock_guard lock(mutex_);
    buffers_.clear();
}

}  // namespace tarvik::tests
