// SPDX-License-Identifier: MIT
// Sound on its way: frames into channels, channels into chunks, and chunks into samples again in
// the local speech service. Each step is compared with the plain loop that says the same.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "audio/PcmConversion.h"
#include "fuzz/Promise.h"
#include "platform/linux/audio/DeinterleavingBuffer.h"
#include "speech-service/PcmReader.h"

namespace {

using namespace tarvik;
using fuzz::promise;

constexpr std::uint32_t maxChannels = 8;
constexpr std::uint32_t maxCapacity = 300;

std::int16_t expectedSample(const float* frame, std::uint32_t channelCount) {
    float sum = 0;
    for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
        sum += frame[channel];
    }
    const float mean = sum / static_cast<float>(channelCount);
    if (std::isnan(mean) || mean >= 1.0F) {
        return 32767;
    }
    return static_cast<std::int16_t>(std::max(mean, -1.0F) * 32767.0F);
}

std::int16_t sampleAt(const std::string& pcm, std::size_t index) {
    const auto low = static_cast<unsigned char>(pcm[2 * index]);
    const auto high = static_cast<unsigned char>(pcm[2 * index + 1]);
    return static_cast<std::int16_t>(high << 8 | low);
}

std::vector<float> samplesIn(FuzzedDataProvider& input) {
    std::vector<float> samples;
    while (input.remaining_bytes() >= sizeof(float)) {
        samples.push_back(std::bit_cast<float>(input.ConsumeIntegral<std::uint32_t>()));
    }
    return samples;
}

// The service hears the samples, however the chunks are cut.
void checkService(const std::string& pcm, std::size_t cut) {
    service::PcmReader reader;
    std::vector<float> heard;
    for (std::size_t start = 0; start < pcm.size(); start += cut) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(pcm.data()) + start;
        const auto part = reader.read({bytes, std::min(cut, pcm.size() - start)});
        heard.insert(heard.end(), part.begin(), part.end());
    }
    promise(heard.size() == pcm.size() / 2, "every whole sample is heard, and no other");
    for (std::size_t index = 0; index < heard.size(); ++index) {
        promise(heard[index] == static_cast<float>(sampleAt(pcm, index)) / 32768.0F,
                "a sample keeps its value");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto channelCount = input.ConsumeIntegralInRange<std::uint32_t>(1, maxChannels);
    const auto capacity = input.ConsumeIntegralInRange<std::uint32_t>(0, maxCapacity);
    const auto fragment = input.ConsumeIntegralInRange<std::size_t>(1, 100);
    const auto cut = input.ConsumeIntegralInRange<std::size_t>(1, 9);
    const bool hasHole = input.ConsumeBool();
    const std::vector<float> samples = samplesIn(input);
    const std::size_t frames = samples.size() / channelCount;

    std::string pcm;
    linuxdesktop::DeinterleavingBuffer buffer(
        capacity, {48000, channelCount}, [&](const platform::AudioPcmBuffer& full) {
            promise(full.frameLength == std::max(capacity, 1U), "a buffer is delivered full");
            pcm += float32ToInt16LE(full).value();
        });
    for (std::size_t start = 0; start < frames; start += fragment) {
        // A copy of the right length, so that the sanitizer sees a read beyond the end.
        const auto first = samples.begin() + static_cast<std::ptrdiff_t>(start * channelCount);
        const std::size_t count = std::min(fragment, frames - start);
        const std::vector<float> part(first,
                                      first + static_cast<std::ptrdiff_t>(count * channelCount));
        buffer.append(part.data(), count);
    }
    const std::size_t whole = frames / std::max(capacity, 1U) * std::max(capacity, 1U);
    promise(pcm.size() == 2 * whole, "every frame of a full buffer becomes one sample");
    for (std::size_t frame = 0; frame < whole; ++frame) {
        promise(sampleAt(pcm, frame) ==
                    expectedSample(samples.data() + frame * channelCount, channelCount),
                "a frame becomes the mean of its channels");
    }
    if (hasHole) {
        pcm.clear();
        buffer.append(nullptr, 2 * std::size_t{std::max(capacity, 1U)});
        promise(pcm.size() == 4 * std::size_t{std::max(capacity, 1U)}, "a hole keeps its length");
        promise(pcm.ends_with(std::string(2 * std::size_t{std::max(capacity, 1U)}, '\0')),
                "a hole is silence");
    }
    checkService(pcm, cut);
    checkService(std::string(reinterpret_cast<const char*>(data), size), cut);
    return 0;
}
