// SPDX-License-Identifier: MIT

#include "audio/PcmConversion.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "audio/SampleKernel.h"

namespace tarvik {

namespace {

void toLittleEndian(std::span<char> bytes) {
    if constexpr (std::endian::native == std::endian::big) {
        for (std::size_t i = 0; i + 1 < bytes.size(); i += sizeof(std::int16_t)) {
            std::swap(bytes[i], bytes[i + 1]);
        }
    }
}

}  // namespace

std::optional<PcmChunk> float32ToInt16LE(const platform::AudioPcmBuffer& buffer) {
    if (buffer.floatChannelData == nullptr) {
        return std::nullopt;
    }
    PcmChunk chunk(buffer.frameLength * sizeof(std::int16_t), '\0');
    averageToInt16(buffer.floatChannelData, buffer.format.channelCount, buffer.frameLength,
                   chunk.data());
    toLittleEndian(chunk);
    return chunk;
}

}  // namespace tarvik
