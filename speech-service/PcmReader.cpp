// SPDX-License-Identifier: MIT

#include "speech-service/PcmReader.h"

namespace tarvik::service {

std::vector<float> PcmReader::read(std::span<const std::uint8_t> bytes) {
    std::vector<float> samples;
    samples.reserve(bytes.size() / 2 + 1);
    for (const std::uint8_t byte : bytes) {
        if (lowByte_) {
            const auto sample = static_cast<std::int16_t>(byte << 8 | *lowByte_);
            samples.push_back(static_cast<float>(sample) / 32768.0F);
            lowByte_.reset();
        } else {
            lowByte_ = byte;
        }
    }
    return samples;
}

}  // namespace tarvik::service
