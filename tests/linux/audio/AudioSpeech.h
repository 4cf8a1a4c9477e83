#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarvik::tests {

/// A tone that no silence can be mistaken for: `frameCount` frames, interleaved, a sine of another
/// frequency on each channel, without a single zero.
std::vector<std::int16_t> tone(std::size_t frameCount, std::size_t channelCount);

/// The samples of one channel of interleaved ones.
std::vector<std::int16_t> channelOf(const std::vector<std::int16_t>& samples, std::size_t channel,
                                    std::size_t channelCount);

/// Where `part` stands in `whole`, sample for sample; −1 when nowhere.
std::ptrdiff_t positionOf(const std::vector<std::int16_t>& part,
                          const std::vector<std::int16_t>& whole);

/// How many of the samples are not silence.
std::ptrdiff_t loudSamples(const std::vector<std::int16_t>& samples);

}  // namespace tarvik::tests
