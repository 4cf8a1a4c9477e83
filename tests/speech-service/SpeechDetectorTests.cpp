// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <optional>

#include "speech-service/SpeechDetector.h"
#include "tests/speech-service/SyntheticSound.h"

namespace tarvik::service {

namespace {

/// When the detector found speech in `sound`, in seconds from the start.
std::optional<double> onsetIn(SpeechDetector& detector, const Sound& sound) {
    for (std::size_t i = 0; i + SpeechDetector::frameSize <= sound.size();
         i += SpeechDetector::frameSize) {
        detector.process(std::span(sound).subspan(i).first<SpeechDetector::frameSize>());
        if (detector.hasOnset()) {
            return static_cast<double>(i + SpeechDetector::frameSize) / 16000;
        }
    }
    return std::nullopt;
}

void feed(SpeechDetector& detector, const Sound& sound) {
    for (std::size_t i = 0; i + SpeechDetector::frameSize <= sound.size();
         i += SpeechDetector::frameSize) {
        detector.process(std::span(sound).subspan(i).first<SpeechDetector::frameSize>());
    }
}

TEST(SpeechDetector, HearsAVoiceAndWhenItBegan) {
    SpeechDetector detector;
    const std::optional<double> onset = onsetIn(detector, quiet(1) + voice(1));
    ASSERT_TRUE(onset);
    EXPECT_NEAR(*onset, 1.1, 0.06);
    // With the lead of 0.15 s.
    EXPECT_NEAR(*onset - detector.onsetAge().count(), 0.85, 0.06);
}

TEST(SpeechDetector, HearsAVoiceFromTheFirstSampleOn) {
    SpeechDetector detector;
    EXPECT_TRUE(onsetIn(detector, voice(0.2)));
}

TEST(SpeechDetector, HearsAShortWord) {
    SpeechDetector detector;
    EXPECT_TRUE(onsetIn(detector, quiet(0.5) + voice(0.12) + quiet(0.5)));
}

TEST(SpeechDetector, HearsAQuietVoice) {
    SpeechDetector detector;
    EXPECT_TRUE(onsetIn(detector, quiet(1) + voice(0.5, -50)));
}

TEST(SpeechDetector, CountsTheHissBeforeAVoiceAsSpeech) {
    SpeechDetector detector;
    const std::optional<double> onset =
        onsetIn(detector, quiet(1) + whiteNoise(0.2, -35) + voice(1));
    ASSERT_TRUE(onset);
    EXPECT_NEAR(*onset - detector.onsetAge().count(), 0.85, 0.06);
}

class SpeechDetectorInNoise : public testing::TestWithParam<double> {};

TEST_P(SpeechDetectorInNoise, HearsNoSpeechInHiss) {
    SpeechDetector detector;
    EXPECT_FALSE(onsetIn(detector, whiteNoise(30, GetParam())));
}

TEST_P(SpeechDetectorInNoise, HearsNoSpeechInWind) {
    SpeechDetector detector;
    EXPECT_FALSE(onsetIn(detector, brownNoise(30, GetParam())));
}

TEST_P(SpeechDetectorInNoise, HearsNoSpeechInHissThatBegins) {
    SpeechDetector detector;
    EXPECT_FALSE(onsetIn(detector, quiet(3) + whiteNoise(10, GetParam())));
}

TEST_P(SpeechDetectorInNoise, HearsAVoiceThatIsLouder) {
    SpeechDetector detector;
    EXPECT_FALSE(onsetIn(detector, whiteNoise(3, GetParam())));
    EXPECT_TRUE(onsetIn(
        detector, mixed(whiteNoise(1, GetParam()), voice(1, std::min(GetParam() + 12, -9.0)))));
}

TEST_P(SpeechDetectorInNoise, HearsThePauseAfterAVoice) {
    SpeechDetector detector;
    feed(detector, whiteNoise(3, GetParam()));
    feed(detector, mixed(whiteNoise(2, GetParam()), voice(2, std::min(GetParam() + 15, -9.0))));
    feed(detector, whiteNoise(1, GetParam()));
    EXPECT_NEAR(detector.pause().count(), 1, 0.1);
}

INSTANTIATE_TEST_SUITE_P(Levels, SpeechDetectorInNoise, testing::Values(-60, -39, -30));

TEST(SpeechDetector, HearsTheEndOfAVoice) {
    SpeechDetector detector;
    feed(detector, quiet(1) + voice(2));
    EXPECT_NEAR(detector.pause().count(), 0, 0.02);
    feed(detector, quiet(0.7));
    EXPECT_NEAR(detector.pause().count(), 0.7, 0.06);
}

TEST(SpeechDetector, DoesNotTakeAQuieterVoiceForAPause) {
    SpeechDetector detector;
    feed(detector, quiet(1) + voice(10, -15) + voice(2, -35));
    EXPECT_NEAR(detector.pause().count(), 0, 0.02);
}

TEST(SpeechDetector, EndsSpeechInHissThatBeganMeanwhile) {
    SpeechDetector detector;
    feed(detector, quiet(1) + voice(1) + whiteNoise(2.5, -30));
    EXPECT_GE(detector.pause().count(), 1);
}

}  // namespace

}  // namespace tarvik::service
