// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "platform/AudioEngine.h"

namespace tarvik {

/// Mono signed 16-bit little-endian samples, two bytes each, without a header, at the microphone's
/// sample rate. A chunk is a byte string, so that it becomes the payload of a web-socket message
/// without another copy.
using PcmChunk = std::string;

/// Mixes a buffer down to mono by averaging its channels and converts it to 16-bit samples.
///
/// The mean is clamped to −1.0 to 1.0, multiplied by 32767 and truncated toward zero. A mean that
/// is not a number becomes 32767. A buffer of zero frames gives an empty chunk. A buffer without
/// float samples gives no chunk. Any thread.
std::optional<PcmChunk> float32ToInt16LE(const platform::AudioPcmBuffer& buffer);

}  // namespace tarvik
