// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "speech-service/PcmReader.h"
#include "speech-service/Resampler.h"

namespace tarvik::service {

namespace {

std::vector<float> tone(int rate, double hertz, double seconds) {
    std::vector<float> samples(static_cast<std::size_t>(rate * seconds));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<float>(
            0.5 * std::sin(2 * std::numbers::pi * hertz * static_cast<double>(i) / rate));
    }
    return samples;
}

void append(std::vector<std::int16_t>& samples, const std::vector<std::int16_t>& more) {
    samples.insert(samples.end(), more.begin(), more.end());
}

std::vector<std::int16_t> resampled(int rate, const std::vector<float>& samples,
                                    std::size_t pieceSize) {
    Resampler resampler = Resampler::create(rate).value();
    std::vector<std::int16_t> output;
    for (std::size_t i = 0; i < samples.size(); i += pieceSize) {
        append(output, resampler.process(
                           std::span(samples).subspan(i, std::min(pieceSize, samples.size() - i))));
    }
    append(output, resampler.finish());
    return output;
}

double rootMeanSquare(const std::vector<std::int16_t>& samples) {
    double sum = 0;
    for (const std::int16_t sample : samples) {
        sum += static_cast<double>(sample) * sample;
    }
    return std::sqrt(sum / static_cast<double>(samples.size())) / 32768;
}

class ResamplerAt : public testing::TestWithParam<int> {};

TEST_P(ResamplerAt, KeepsLengthAndLoudnessOfSpeechFrequencies) {
    const std::vector<std::int16_t> output = resampled(GetParam(), tone(GetParam(), 1000, 2), 777);
    EXPECT_NEAR(static_cast<double>(output.size()), 2 * recognitionRate, 2);
    EXPECT_NEAR(rootMeanSquare(output), 0.5 / std::numbers::sqrt2, 0.02);
}

TEST_P(ResamplerAt, JoinsPiecesWithoutASeam) {
    const std::vector<float> samples = tone(GetParam(), 440, 0.5);
    EXPECT_EQ(resampled(GetParam(), samples, 101), resampled(GetParam(), samples, samples.size()));
}

INSTANTIATE_TEST_SUITE_P(Rates, ResamplerAt,
                         testing::Values(8000, 11025, 16000, 22050, 44100, 48000, 96000, 192000),
                         testing::PrintToStringParamName());

TEST(Resampler, RemovesWhatTheRecognizersRateCannotHold) {
    EXPECT_LT(rootMeanSquare(resampled(48000, tone(48000, 12000, 1), 960)), 0.001);
}

TEST(PcmReader, ReadsSignedLittleEndianSamples) {
    PcmReader reader;
    const std::vector<std::uint8_t> bytes{0x00, 0x00, 0xFF, 0x7F, 0x00, 0x80, 0x00, 0xC0};
    EXPECT_EQ(reader.read(bytes), (std::vector<float>{0, 32767.0F / 32768, -1, -0.5F}));
}

TEST(PcmReader, PutsASampleTogetherThatWasCut) {
    PcmReader reader;
    EXPECT_TRUE(reader.read(std::vector<std::uint8_t>{0x00}).empty());
    EXPECT_TRUE(reader.read({}).empty());
    EXPECT_EQ(reader.read(std::vector<std::uint8_t>{0xC0, 0x00}), std::vector<float>{-0.5F});
    EXPECT_EQ(reader.read(std::vector<std::uint8_t>{0x40}), std::vector<float>{0.5F});
}

}  // namespace

}  // namespace tarvik::service
