#include "audio/PcmConversion.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace tarvik {

namespace {

constexpr float fullScale = 32767.0F;

// Frames converted in one go: small enough to stay in the first-level cache, large enough that the
// loops below, which the compiler turns into vector code, run at full width.
constexpr std::size_t blockFrames = 256;

using MixBlock = std::array<float, blockFrames>;
using SampleBlock = std::array<std::int16_t, blockFrames>;

void addChannel(MixBlock& mix, const float* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        mix[i] += samples[i];
    }
}

void divide(MixBlock& mix, float divisor, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        mix[i] /= divisor;
    }
}

// The comparison with 1.0 comes first and in this form, so that what is not a number counts as full
// scale and never reaches the conversion to an integer.
std::int16_t sampleFromMean(float mean) {
    const float upperClamped = mean < 1.0F ? mean : 1.0F;
    const float clamped = upperClamped > -1.0F ? upperClamped : -1.0F;
    return static_cast<std::int16_t>(static_cast<std::int32_t>(clamped * fullScale));
}

void toSamples(const float* means, SampleBlock& samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = sampleFromMean(means[i]);
    }
}

void storeLittleEndian(SampleBlock& samples, std::size_t count, char* bytes) {
    if constexpr (std::endian::native == std::endian::big) {
        for (std::size_t i = 0; i < count; ++i) {
            const auto unit = static_cast<std::uint16_t>(samples[i]);
            samples[i] = static_cast<std::int16_t>(static_cast<std::uint16_t>(unit << 8) |
                                                   static_cast<std::uint16_t>(unit >> 8));
        }
    }
    std::memcpy(bytes, samples.data(), count * sizeof(std::int16_t));
}

}  // namespace

std::optional<PcmChunk> float32ToInt16LE(const platform::AudioPcmBuffer& buffer) {
    if (buffer.floatChannelData == nullptr) {
        return std::nullopt;
    }
    const std::uint32_t channels = buffer.format.channelCount;
    const std::size_t frames = buffer.frameLength;
    PcmChunk chunk(frames * sizeof(std::int16_t), '\0');
    MixBlock mix;
    SampleBlock samples;
    for (std::size_t first = 0; first < frames; first += blockFrames) {
        const std::size_t count = std::min(blockFrames, frames - first);
        const float* means = mix.data();
        if (channels == 1) {
            means = buffer.floatChannelData[0] + first;
        } else {
            mix.fill(0.0F);
            for (std::uint32_t channel = 0; channel < channels; ++channel) {
                addChannel(mix, buffer.floatChannelData[channel] + first, count);
            }
            divide(mix, static_cast<float>(channels), count);
        }
        toSamples(means, samples, count);
        storeLittleEndian(samples, count, chunk.data() + first * sizeof(std::int16_t));
    }
    return chunk;
}

}  // namespace tarvik
