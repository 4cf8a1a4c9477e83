// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarvik::tests {

/// `frameCount` interleaved frames of a sine, with another frequency on each channel. No sample is
/// zero, so tone and silence cannot be confused.
std::vector<std::int16_t> tone(std::size_t frameCount, std::size_t channelCount);

/// The samples of one channel out of interleaved `samples`.
std::vector<std::int16_t> channelOf(const std::vector<std::int16_t>& samples, std::size_t channel,
                                    std::size_t channelCount);

/// The index at which `whole` contains `part`, sample for sample; −1 when `whole` does not.
std::ptrdiff_t positionOf(const std::vector<std::int16_t>& part,
                          const std::vector<std::int16_t>& whole);

/// The number of samples that are not zero.
std::ptrdiff_t loudSamples(const std::vector<std::int16_t>& samples);

}  // namespace tarvik::tests
