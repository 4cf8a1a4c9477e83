// SPDX-License-Identifier: MIT

#include "speech-service/SpeechDetector.h"

#include <algorithm>
#include <cmath>

namespace tarvik::service {

namespace {

// Levels in dB.
constexpr double minBackground = -70;
constexpr double initialBackground = -50;
constexpr double minVoiceLevel = -62;
constexpr double loudness = 6;
constexpr double voiceLoudness = 4;
// White noise stays below this value; vowels reach 0.8 and more.
constexpr double minPeriodicity = 0.7;

// Frames.
constexpr std::size_t onsetWindow = 12;
constexpr std::size_t onsetVoices = 6;
constexpr std::size_t maxLead = 40;
constexpr std::size_t maxGap = 4;
constexpr std::size_t margin = 15;
// No speech goes on for longer than this without a voice.
constexpr std::size_t maxVoiceless = 100;
constexpr std::size_t blockLength = 25;

// In dB a frame. The background rises slowly in speech, so that long speech does not become its own
// background.
constexpr double riseInSpeech = 0.015;
constexpr double riseInSilence = 0.3;

double decibels(double power) {
    return 10 * std::log10(power + 1e-10);
}

}  // namespace

double SpeechDetector::Filter::operator()(double sample) {
    const double output = numerator[0] * sample + state[0];
    state[0] = numerator[1] * sample - denominator[0] * output + state[1];
    state[1] = numerator[2] * sample - denominator[1] * output;
    return output;
}

// Butterworth filters at 16 kHz: a high pass of 150 Hz and a low pass of 900 Hz.
SpeechDetector::SpeechDetector()
    : levelFilter_{{0.95920, -1.91840, 0.95920}, {-1.91674, 0.92007}},
      pitchFilters_{Filter{{0.02483, 0.04966, 0.02483}, {-1.50745, 0.60676}},
                    Filter{{0.02483, 0.04966, 0.02483}, {-1.50745, 0.60676}}},
      level_(minBackground),
      background_(initialBackground),
      smoothLevel_(initialBackground) {
    blockMinima_.fill(0);
}

void SpeechDetector::process(std::span<const std::int16_t, frameSize> frame) {
    measure(frame);
    followBackground();
    ++frames_;
    Frame& newest = recent_[frames_ % recentFrames];
    newest.isVoiced = level_ > std::max(background_ + voiceLoudness, minVoiceLevel) &&
                      periodicity() > minPeriodicity;
    newest.isLoud = level_ > background_ + loudness;
    if (newest.isVoiced) {
        lastVoice_ = frames_;
    }
    if (newest.isVoiced || (newest.isLoud && frames_ - lastVoice_ < maxVoiceless)) {
        lastSpeech_ = frames_;
    }
}

void SpeechDetector::measure(std::span<const std::int16_t, frameSize> frame) {
    constexpr std::size_t decimation = 4;
    constexpr double preEmphasis = 0.97;
    std::shift_left(pitchSamples_.begin(), pitchSamples_.end(), frameSize / decimation);
    auto pitchSample = pitchSamples_.end() - frameSize / decimation;
    double energy = 0;
    for (std::size_t i = 0; i < frameSize; ++i) {
        const double sample = frame[i] / 32768.0;
        const double audible = levelFilter_(sample);
        energy += audible * audible;
        // Flattens the spectrum: rumble would look periodic otherwise.
        double pitch = sample - preEmphasis * lastSample_;
        lastSample_ = sample;
        for (Filter& filter : pitchFilters_) {
            pitch = filter(pitch);
        }
        if (i % decimation == decimation - 1) {
            *pitchSample++ = pitch;
        }
    }
    level_ = decibels((energy + lastEnergy_) / (2 * frameSize));
    lastEnergy_ = energy;
}

void SpeechDetector::followBackground() {
    constexpr double smoothing = 0.2;
    smoothLevel_ += smoothing * (level_ - smoothLevel_);
    double& block = blockMinima_[frames_ / blockLength % blockMinima_.size()];
    if (frames_ % blockLength == 0) {
        block = smoothLevel_;
    }
    block = std::min(block, smoothLevel_);
    const double lowest = *std::min_element(blockMinima_.begin(), blockMinima_.end());
    const bool isInSpeech = frames_ - lastVoice_ < maxVoiceless / 2;
    const double rise = isInSpeech ? riseInSpeech : riseInSilence;
    background_ = std::max(minBackground, std::min(lowest, background_ + rise));
}

double SpeechDetector::periodicity() const {
    double best = 0;
    const std::span<const double, pitchWindow> window(pitchSamples_.data() + maxLag, pitchWindow);
    double power = 0;
    for (std::size_t i = 0; i < pitchWindow; ++i) {
        power += window[i] * window[i];
    }
    for (std::size_t lag = minLag; lag <= maxLag; ++lag) {
        double product = 0;
        double earlierPower = 0;
        for (std::size_t i = 0; i < pitchWindow; ++i) {
            const double earlier = pitchSamples_[maxLag + i - lag];
            product += window[i] * earlier;
            earlierPower += earlier * earlier;
        }
        best = std::max(best, product / std::sqrt(power * earlierPower + 1e-20));
    }
    return best;
}

const SpeechDetector::Frame& SpeechDetector::frameAt(std::size_t age) const {
    return recent_[(frames_ + recentFrames - age) % recentFrames];
}

bool SpeechDetector::hasOnset() const {
    std::size_t voices = 0;
    for (std::size_t age = 0; age < onsetWindow; ++age) {
        voices += frameAt(age).isVoiced ? 1U : 0U;
    }
    return voices >= onsetVoices;
}

Seconds SpeechDetector::onsetAge() const {
    std::size_t begin = 0;
    for (std::size_t age = 0; age < onsetWindow; ++age) {
        begin = frameAt(age).isVoiced ? age : begin;
    }
    std::size_t gap = 0;
    for (std::size_t age = begin + 1; age < onsetWindow + maxLead && gap <= maxGap; ++age) {
        gap = frameAt(age).isLoud ? 0 : gap + 1;
        begin = gap == 0 ? age : begin;
    }
    return frameLength * static_cast<double>(begin + 1 + margin);
}

Seconds SpeechDetector::pause() const {
    return frameLength * static_cast<double>(frames_ - lastSpeech_);
}

}  // namespace tarvik::service
