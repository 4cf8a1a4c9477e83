#pragma once

#include <cstddef>
#include <cstdint>

namespace tarvik {

/// Averages `channelCount` arrays of `frames` float samples and writes the means to `bytes` as
/// signed 16-bit integers in the machine's byte order (two bytes each, at any alignment), scaled
/// and clamped as float32ToInt16LE() says. It runs on the widest vector unit that the processor
/// has. Any thread.
void averageToInt16(const float* const* channels, std::uint32_t channelCount, std::size_t frames,
                    char* bytes);

}  // namespace tarvik
