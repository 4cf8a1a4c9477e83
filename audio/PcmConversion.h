#pragma once

#include <optional>
#include <string>

#include "platform/AudioEngine.h"

namespace tarvik {

/// Mono signed 16-bit little-endian samples, two bytes each, without a header, at the rate of the
/// microphone that they come from. It is a byte string because it leaves as the payload of a
/// web-socket message, without another copy.
using PcmChunk = std::string;

/// Mixes a buffer down to mono by averaging its channels and converts it to 16-bit samples.
///
/// A mean sample is scaled by 32767 on both sides and truncated toward zero; 1.0 and above, and
/// what is not a number, give 32767, −1.0 and below give −32767. A buffer of zero frames gives an
/// empty chunk; a buffer without float samples gives none. Any thread.
std::optional<PcmChunk> float32ToInt16LE(const platform::AudioPcmBuffer& buffer);

}  // namespace tarvik
