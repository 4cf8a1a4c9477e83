// SPDX-License-Identifier: MIT

#include "tests/speech-service/SyntheticSound.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "speech-service/Resampler.h"

namespace tarvik::service {

namespace {

std::size_t samplesIn(double seconds) {
    return static_cast<std::size_t>(seconds * recognitionRate);
}

Sound scaled(const std::vector<double>& wave, double level) {
    double power = 0;
    for (const double sample : wave) {
        power += sample * sample;
    }
    const double target = 32768 * std::pow(10, level / 20);
    const double factor = target / std::sqrt(power / static_cast<double>(wave.size()));
    Sound sound;
    sound.reserve(wave.size());
    for (const double sample : wave) {
        sound.push_back(
            static_cast<std::int16_t>(std::clamp(std::round(sample * factor), -32768.0, 32767.0)));
    }
    return sound;
}

}  // namespace

Sound quiet(double seconds) {
    return Sound(samplesIn(seconds));
}

Sound voice(double seconds, double level) {
    std::vector<double> wave(samplesIn(seconds));
    for (std::size_t i = 0; i < wave.size(); ++i) {
        const double time = static_cast<double>(i) / recognitionRate;
        for (int harmonic = 1; harmonic <= 20; ++harmonic) {
            wave[i] += std::sin(2 * std::numbers::pi * 120 * harmonic * time) / harmonic;
        }
    }
    return scaled(wave, level);
}

Sound whiteNoise(double seconds, double level) {
    std::mt19937 generator(1);
    std::normal_distribution<double> distribution;
    std::vector<double> wave(samplesIn(seconds));
    std::generate(wave.begin(), wave.end(), [&] { return distribution(generator); });
    return scaled(wave, level);
}

Sound brownNoise(double seconds, double level) {
    constexpr double leak = 0.995;
    std::mt19937 generator(1);
    std::normal_distribution<double> distribution;
    std::vector<double> wave(samplesIn(seconds));
    double sum = 0;
    for (double& sample : wave) {
        sum = sum * leak + distribution(generator);
        sample = sum;
    }
    return scaled(wave, level);
}

Sound operator+(Sound first, const Sound& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Sound mixed(Sound first, const Sound& second) {
    for (std::size_t i = 0; i < std::min(first.size(), second.size()); ++i) {
        first[i] = static_cast<std::int16_t>(std::clamp(first[i] + second[i], -32768, 32767));
    }
    return first;
}

}  // namespace tarvik::service
