// SPDX-License-Identifier: MIT

#include "tests/conformance/audio/TestTone.h"

#include <algorithm>
#include <cmath>

namespace tarvik::tests {

std::vector<std::int16_t> tone(std::size_t frameCount, std::size_t channelCount) {
    std::vector<std::int16_t> samples;
    for (std::size_t frame = 0; frame < frameCount; ++frame) {
        for (std::size_t channel = 0; channel < channelCount; ++channel) {
            const double phase =
                static_cast<double>(frame + 1) * 0.0371 * static_cast<double>(channel + 1);
            const auto sample = static_cast<std::int16_t>(std::lround(12000 * std::sin(phase)));
            samples.push_back(sample == 0 ? std::int16_t{1} : sample);
        }
    }
    return samples;
}

std::vector<std::int16_t> channelOf(const std::vector<std::int16_t>& samples, std::size_t channel,
                                    std::size_t channelCount) {
    std::vector<std::int16_t> part;
    for (std::size_t index = channel; index < samples.size(); index += channelCount) {
        part.push_back(samples[index]);
    }
    return part;
}

std::ptrdiff_t positionOf(const std::vector<std::int16_t>& part,
                          const std::vector<std::int16_t>& whole) {
    const auto found = std::search(whole.begin(), whole.end(), part.begin(), part.end());
    return found == whole.end() ? -1 : found - whole.begin();
}

std::ptrdiff_t loudSamples(const std::vector<std::int16_t>& samples) {
    return std::count_if(samples.begin(), samples.end(),
                         [](std::int16_t sample) { return sample != 0; });
}

}  // namespace tarvik::tests
