// SPDX-License-Identifier: MIT

// What audio promises without a microphone and without a permission. Nothing here captures sound.
#include <gtest/gtest.h>

#include <memory>

#include "tests/conformance/audio/AudioWorld.h"

namespace tarvik::tests {

namespace {

class UnattendedAudioConformance : public testing::TestWithParam<AudioWorldMaker> {
  protected:
    std::unique_ptr<AudioWorld> world = GetParam().make();
    int changes = 0;
    std::unique_ptr<platform::AudioObservation> observation =
        world->service().observeConfigurationChange([this] { ++changes; });
};

TEST_P(UnattendedAudioConformance, WithoutAMicrophoneTheRateIsZeroAndStartSaysWhy) {
    if (!world->isWithoutMicrophone()) {
        GTEST_SKIP() << "this machine has a microphone, and a start would ask for the permission";
    }
    const auto engine = world->service().makeEngine();
    EXPECT_EQ(engine->inputNode().inputFormatForBus(0).sampleRate, 0);
    for (int round = 0; round < 2; ++round) {
        const std::optional<Error> error = engine->start();
        ASSERT_TRUE(error);
        EXPECT_FALSE(error->localizedDescription.empty());
        engine->stop();
    }
}

TEST_P(UnattendedAudioConformance, AnEngineThatHasNeverStartedCanBeAskedStoppedAndDropped) {
    for (int round = 0; round < 2; ++round) {
        const auto engine = world->service().makeEngine();
        const platform::AudioFormat format = engine->inputNode().inputFormatForBus(0);
        EXPECT_GE(format.sampleRate, 0);
        EXPECT_EQ(engine->inputNode().inputFormatForBus(0).sampleRate, format.sampleRate);
        engine->inputNode().removeTapOnBus(0);
        engine->stop();
    }
    world->settle();
    EXPECT_EQ(changes, 0);
}

TEST_P(UnattendedAudioConformance, TheAuthorizationIsKnownWithoutARequest) {
    const int status = world->authorization().authorizationStatusForAudio();
    EXPECT_GE(status, static_cast<int>(platform::AuthorizationStatus::notDetermined));
    EXPECT_LE(status, static_cast<int>(platform::AuthorizationStatus::authorized));
    world->settle();
    EXPECT_EQ(world->authorization().authorizationStatusForAudio(), status);
}

INSTANTIATE_TEST_SUITE_P(Worlds, UnattendedAudioConformance, everyAudioWorld(), nameOf);

}  // namespace

}  // namespace tarvik::tests
