// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "audio/PcmConversion.h"
#include "audio/SampleKernel.h"

namespace tarvik {
namespace {

using Channels = std::vector<std::vector<float>>;

std::optional<PcmChunk> convert(const Channels& channels, std::uint32_t channelCount) {
    std::vector<const float*> arrays;
    for (const std::vector<float>& channel : channels) {
        arrays.push_back(channel.data());
    }
    platform::AudioPcmBuffer buffer;
    buffer.floatChannelData = arrays.data();
    buffer.frameLength = static_cast<std::uint32_t>(channels.front().size());
    buffer.format = {48000, channelCount};
    return float32ToInt16LE(buffer);
}

std::vector<std::int16_t> samplesOf(const PcmChunk& chunk) {
    std::vector<std::int16_t> samples;
    for (std::size_t i = 0; i + 1 < chunk.size(); i += 2) {
        const auto low = static_cast<unsigned char>(chunk[i]);
        const auto high = static_cast<unsigned char>(chunk[i + 1]);
        samples.push_back(static_cast<std::int16_t>(high << 8 | low));
    }
    return samples;
}

std::vector<std::int16_t> converted(const Channels& channels) {
    return samplesOf(convert(channels, static_cast<std::uint32_t>(channels.size())).value());
}

std::int16_t convertedSample(float sample) {
    return converted({{sample}}).front();
}

/// The expected sample of one frame, computed step by step.
std::int16_t expectedSample(const Channels& channels, std::size_t frame) {
    float sum = 0;
    for (const std::vector<float>& channel : channels) {
        sum += channel[frame];
    }
    const float mean = sum / static_cast<float>(channels.size());
    const float scaled = mean < 1.0F ? std::max(mean, -1.0F) * 32767.0F : 32767.0F;
    return static_cast<std::int16_t>(scaled);
}

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

TEST(PcmConversion, FullScaleAndAboveGiveTheMaxSample) {
    EXPECT_EQ(convertedSample(1.0F), 32767);
    EXPECT_EQ(convertedSample(1.5F), 32767);
    EXPECT_EQ(convertedSample(infinity), 32767);
}

TEST(PcmConversion, NegativeFullScaleAndBelowGiveTheNegatedMaxSample) {
    EXPECT_EQ(convertedSample(-1.0F), -32767);
    EXPECT_EQ(convertedSample(-1.5F), -32767);
    EXPECT_EQ(convertedSample(-infinity), -32767);
}

TEST(PcmConversion, TruncatesTowardZero) {
    EXPECT_EQ(convertedSample(0.5F), 16383);
    EXPECT_EQ(convertedSample(-0.5F), -16383);
    EXPECT_EQ(convertedSample(0.99999F), 32766);
    EXPECT_EQ(convertedSample(-0.99999F), -32766);
    EXPECT_EQ(convertedSample(0.00003F), 0);
    EXPECT_EQ(convertedSample(-0.00003F), 0);
    EXPECT_EQ(convertedSample(0.0F), 0);
    EXPECT_EQ(convertedSample(-0.0F), 0);
}

TEST(PcmConversion, NotANumberGivesTheMaxSample) {
    EXPECT_EQ(convertedSample(notANumber), 32767);
    EXPECT_EQ(convertedSample(-notANumber), 32767);
    EXPECT_EQ(converted({{0.0F}, {notANumber}}).front(), 32767);
    EXPECT_EQ(converted({{infinity}, {-infinity}}).front(), 32767);
}

TEST(PcmConversion, ZeroChannelsGiveTheMaxSampleForEveryFrame) {
    const auto chunk = convert({std::vector<float>(37, 0.25F)}, 0);
    ASSERT_TRUE(chunk);
    EXPECT_EQ(samplesOf(*chunk), std::vector<std::int16_t>(37, 32767));
}

TEST(PcmConversion, ChannelsAreAveraged) {
    EXPECT_EQ(converted({{0.5F}, {-0.5F}}).front(), 0);
    EXPECT_EQ(converted({{1.0F}, {0.0F}}).front(), 16383);
    EXPECT_EQ(converted({{2.0F}, {0.0F}}).front(), 32767);
    EXPECT_EQ(converted({{0.3F}, {0.3F}, {0.3F}}).front(), 9830);
}

TEST(PcmConversion, SamplesAreLittleEndian) {
    EXPECT_EQ(convert({{0.5F, -1.0F}}, 1), PcmChunk("\xFF\x3F\x01\x80", 4));
}

TEST(PcmConversion, BufferOfZeroFramesGivesAnEmptyChunk) {
    const auto chunk = convert({{}}, 1);
    ASSERT_TRUE(chunk);
    EXPECT_TRUE(chunk->empty());
}

TEST(PcmConversion, BufferWithoutFloatSamplesGivesNoChunk) {
    platform::AudioPcmBuffer buffer;
    buffer.frameLength = 16;
    buffer.format = {48000, 1};
    EXPECT_EQ(float32ToInt16LE(buffer), std::nullopt);
}

class PcmConversionOfChannels : public testing::TestWithParam<std::size_t> {};

TEST_P(PcmConversionOfChannels, IsExactForEveryLengthAndValue) {
    std::mt19937 random(GetParam());
    std::uniform_real_distribution<float> value(-1.25F, 1.25F);
    for (const std::size_t frames : {1U, 2U, 3U, 7U, 8U, 9U, 15U, 16U, 17U, 31U, 33U, 63U, 2048U}) {
        Channels channels(GetParam(), std::vector<float>(frames));
        for (std::vector<float>& channel : channels) {
            std::generate(channel.begin(), channel.end(), [&] { return value(random); });
        }
        // Special values at both ends and thus in vectors as well as in single frames.
        channels.front().front() = notANumber;
        channels.front().back() = infinity;
        std::vector<std::int16_t> expected;
        for (std::size_t frame = 0; frame < frames; ++frame) {
            expected.push_back(expectedSample(channels, frame));
        }
        EXPECT_EQ(converted(channels), expected) << frames << " frames";
    }
}

INSTANTIATE_TEST_SUITE_P(Counts, PcmConversionOfChannels, testing::Values(1, 2, 3, 4, 5, 6, 7, 8));

TEST(PcmConversion, WritesNothingPastTheLastFrame) {
    constexpr char untouched = 0x5A;
    for (std::size_t frames = 0; frames <= 67; ++frames) {
        // More samples than frames, so that reading too many is no fault in memory.
        const std::vector<float> samples(128, 0.25F);
        const float* const channels[] = {samples.data(), samples.data(), samples.data()};
        for (const std::uint32_t channelCount : {1U, 2U, 3U}) {
            std::vector<char> bytes(256, untouched);
            averageToInt16(channels, channelCount, frames, bytes.data());
            const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(2 * frames);
            EXPECT_EQ(std::count(end, bytes.end(), untouched), bytes.end() - end)
                << frames << " frames of " << channelCount << " channels";
        }
    }
}

TEST(PcmConversion, IsExactForEveryRepresentableStep) {
    std::vector<float> steps;
    for (int sample = -32768; sample <= 32768; ++sample) {
        const float value = static_cast<float>(sample) / 32767.0F;
        steps.insert(steps.end(),
                     {std::nextafter(value, -2.0F), value, std::nextafter(value, 2.0F)});
    }
    const Channels mono = {steps};
    std::vector<std::int16_t> expected;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        expected.push_back(expectedSample(mono, i));
    }
    EXPECT_EQ(converted(mono), expected);
}

}  // namespace
}  // namespace tarvik
