// SPDX-License-Identifier: MIT

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "audio/PcmConversion.h"

namespace {

constexpr std::uint32_t frames = 2048;

// A tone slightly above full scale, so that both clamps take effect.
std::vector<float> tone(float phase) {
    std::vector<float> samples(frames);
    for (std::uint32_t i = 0; i < frames; ++i) {
        samples[i] = 1.1F * std::sin(0.05F * static_cast<float>(i) + phase);
    }
    return samples;
}

void convert(benchmark::State& state) {
    const std::array channels = {tone(0.0F), tone(1.0F)};
    const std::array<const float*, 2> data = {channels[0].data(), channels[1].data()};
    tarvik::platform::AudioPcmBuffer buffer;
    buffer.floatChannelData = data.data();
    buffer.frameLength = frames;
    buffer.format = {48000.0, static_cast<std::uint32_t>(state.range(0))};
    for (auto iteration : state) {
        benchmark::DoNotOptimize(tarvik::float32ToInt16LE(buffer));
    }
}

// The yardstick: a plain copy of the same samples, each channel into a new string like a chunk.
void copy(benchmark::State& state) {
    const std::array channels = {tone(0.0F), tone(1.0F)};
    for (auto iteration : state) {
        for (std::size_t channel = 0; channel < static_cast<std::size_t>(state.range(0));
             ++channel) {
            const auto* bytes = reinterpret_cast<const char*>(channels[channel].data());
            benchmark::DoNotOptimize(std::string(bytes, frames * sizeof(float)));
        }
    }
}

BENCHMARK(convert)->ArgName("channels")->Arg(1)->Arg(2);
BENCHMARK(copy)->ArgName("channels")->Arg(1)->Arg(2);

}  // namespace
