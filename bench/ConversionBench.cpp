#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "audio/PcmConversion.h"

namespace {

constexpr std::uint32_t frames = 2048;

// A tone that runs a little over full scale, so that both clamps are taken.
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

// The same samples, copied as they are into memory that is there: what a conversion costs beyond
// this is its own, the memory of its chunk included.
void copy(benchmark::State& state) {
    const std::array channels = {tone(0.0F), tone(1.0F)};
    const auto channelCount = static_cast<std::size_t>(state.range(0));
    std::vector<float> copies(channelCount * frames);
    for (auto iteration : state) {
        for (std::size_t channel = 0; channel < channelCount; ++channel) {
            std::memcpy(copies.data() + channel * frames, channels[channel].data(),
                        frames * sizeof(float));
        }
        benchmark::DoNotOptimize(copies.data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK(convert)->ArgName("channels")->Arg(1)->Arg(2);
BENCHMARK(copy)->ArgName("channels")->Arg(1)->Arg(2);

}  // namespace
