// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace tarvik {

/// Averages `channelCount` arrays of `frames` float samples and writes the means to `bytes`.
///
/// The means are signed 16-bit integers in the machine's byte order, clamped and scaled as
/// float32ToInt16LE() describes. `bytes` has room for two bytes per frame, at any alignment. The
/// function uses the widest vector unit of the processor. Any thread.
void averageToInt16(const float* const* channels, std::uint32_t channelCount, std::size_t frames,
                    char* bytes);

}  // namespace tarvik
