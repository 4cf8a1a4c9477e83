// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

#include "tests/conformance/audio/AudioRecorder.h"
#include "tests/conformance/audio/AudioWorld.h"
#include "tests/conformance/audio/TestTone.h"

namespace tarvik::tests {

namespace {

constexpr std::chrono::seconds timeout{10};

class AudioConformance : public testing::TestWithParam<AudioWorldMaker> {
  protected:
    bool within(const std::function<bool()>& condition) {
        return world->runUntil(condition, timeout);
    }

    /// Whether the number of changes becomes `count` and stays the same.
    testing::AssertionResult changed(int count) {
        within([&] { return recorder.changes() >= count; });
        world->settle();
        return recorder.changes() == count
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << recorder.changes() << " changes";
    }

    void plugFirst(std::uint32_t sampleRate, std::uint32_t channelCount) {
        world->plug(sampleRate, channelCount);
        ASSERT_TRUE(changed(1));
        ASSERT_EQ(recorder.format().sampleRate, sampleRate);
    }

    void record() {
        ASSERT_FALSE(recorder.start());
        ASSERT_TRUE(flows());
    }

    bool flows() {
        const std::size_t before = recorder.buffers();
        return within([&] { return recorder.buffers() > before; });
    }

    /// Whether nothing is delivered while the microphone hears a tone.
    bool isSilentFor(std::uint32_t channelCount) {
        const std::size_t before = recorder.buffers();
        world->speak(tone(4000, channelCount));
        world->settle();
        return recorder.buffers() == before;
    }

    /// The microphone's sound arrives complete and with nothing added, in buffers of the tap's size
    /// at the most.
    void hearsExactly(std::size_t frameCount, std::uint32_t sampleRate,
                      std::uint32_t channelCount) {
        recorder.forget();
        const std::vector<std::int16_t> spoken = tone(frameCount, channelCount);
        world->speak(spoken);
        const auto loud = static_cast<std::ptrdiff_t>(frameCount);
        EXPECT_TRUE(within([&] { return loudSamples(recorder.heard(0)) >= loud; }));
        for (std::size_t channel = 0; channel < channelCount; ++channel) {
            const std::vector<std::int16_t> heard = recorder.heard(channel);
            EXPECT_GE(positionOf(channelOf(spoken, channel, channelCount), heard), 0);
            EXPECT_EQ(loudSamples(heard), loud);
        }
        // Where 2048 frames last long, a buffer may be shorter.
        constexpr std::uint32_t minRateOfWholeBuffers = 44100;
        for (const std::uint32_t length : recorder.lengths()) {
            EXPECT_GT(length, 0U);
            EXPECT_LE(length, AudioRecorder::bufferSize);
            EXPECT_TRUE(length == AudioRecorder::bufferSize || sampleRate < minRateOfWholeBuffers);
        }
        EXPECT_EQ(recorder.lastFormat().sampleRate, sampleRate);
        EXPECT_EQ(recorder.lastFormat().channelCount, channelCount);
    }

    std::unique_ptr<AudioWorld> world = GetParam().make();
    AudioRecorder recorder{world->service()};
};

TEST_P(AudioConformance, AReadyMicrophoneDeliversFromTheStartOnAndNotEarlier) {
    plugFirst(16000, 1);
    platform::AudioEngine& engine = recorder.engine();
    std::atomic<int> deliveries = 0;
    engine.inputNode().installTapOnBus(
        0, AudioRecorder::bufferSize, recorder.format(),
        [&deliveries](const platform::AudioPcmBuffer&) { ++deliveries; });
    engine.prepare();
    world->speak(tone(4000, 1));
    world->settle();
    EXPECT_EQ(deliveries, 0);
    ASSERT_FALSE(engine.start());
    EXPECT_TRUE(within([&] { return deliveries > 0; }));
    engine.inputNode().removeTapOnBus(0);
    engine.stop();
}

TEST_P(AudioConformance, AMicrophoneThatIsNotStartedInTimeIsReadyAgainAtTheStart) {
    plugFirst(16000, 1);
    // Longer than a backend keeps a microphone ready.
    world->runFor(std::chrono::milliseconds(5500));
    record();
    hearsExactly(3000, 16000, 1);
    EXPECT_EQ(recorder.changes(), 1);
}

TEST_P(AudioConformance, AMonoMicrophoneIsHeardSampleForSample) {
    plugFirst(16000, 1);
    record();
    hearsExactly(10 * 2048 + 500, 16000, 1);
}

TEST_P(AudioConformance, AStereoMicrophoneIsHeardWithItsChannelsApart) {
    plugFirst(44100, 2);
    record();
    hearsExactly(20 * 2048 + 500, 44100, 2);
}

TEST_P(AudioConformance, NothingArrivesOnceTheTapIsRemoved) {
    plugFirst(16000, 1);
    record();
    recorder.removeTap();
    EXPECT_TRUE(isSilentFor(1));
}

TEST_P(AudioConformance, RemovingTheTapDeliversNothingItself) {
    plugFirst(16000, 1);
    for (int cycle = 0; cycle < 5; ++cycle) {
        record();
        recorder.stop();
    }
    EXPECT_EQ(recorder.buffersDuringRemoval(), 0);
}

TEST_P(AudioConformance, NothingArrivesOnceTheEngineIsStopped) {
    plugFirst(16000, 1);
    record();
    recorder.engine().stop();
    EXPECT_TRUE(isSilentFor(1));
    // The tap is still installed.
    ASSERT_FALSE(recorder.engine().start());
    EXPECT_TRUE(flows());
}

TEST_P(AudioConformance, StoppingAStoppedEngineAndRemovingNoTapChangesNothing) {
    plugFirst(16000, 1);
    recorder.removeTap();
    recorder.engine().stop();
    record();
    hearsExactly(3000, 16000, 1);
    EXPECT_EQ(recorder.changes(), 1);
}

TEST_P(AudioConformance, AnEngineRecordsAgainAfterEveryStop) {
    plugFirst(16000, 1);
    for (int cycle = 0; cycle < 3; ++cycle) {
        record();
        hearsExactly(3000, 16000, 1);
        recorder.stop();
        const std::size_t before = recorder.buffers();
        world->settle();
        EXPECT_EQ(recorder.buffers(), before);
    }
    EXPECT_EQ(recorder.changes(), 1);
}

TEST_P(AudioConformance, AnotherDefaultMicrophoneIsOneChangeAndIsRecordedFromThenOn) {
    plugFirst(16000, 1);
    record();
    world->plug(44100, 2);
    EXPECT_TRUE(changed(2));
    ASSERT_TRUE(flows());
    hearsExactly(5000, 44100, 2);
    EXPECT_EQ(recorder.changes(), 2);
}

TEST_P(AudioConformance, UnpluggingIsOneChangeAndPluggingInAnother) {
    plugFirst(16000, 1);
    record();
    world->unplug();
    EXPECT_TRUE(changed(2));
    EXPECT_EQ(recorder.format().sampleRate, 0);
    world->plug(48000, 1);
    EXPECT_TRUE(changed(3));
    // The recorder has restarted by itself at the change.
    ASSERT_TRUE(flows());
    hearsExactly(5000, 48000, 1);
}

TEST_P(AudioConformance, SuspendingIsOneChangeAndResumingAnother) {
    plugFirst(16000, 1);
    record();
    world->suspend(true);
    EXPECT_TRUE(changed(2));
    const std::size_t before = recorder.buffers();
    world->settle();
    EXPECT_EQ(recorder.buffers(), before);
    world->suspend(false);
    EXPECT_TRUE(changed(3));
    ASSERT_TRUE(flows());
    hearsExactly(5000, 16000, 1);
    EXPECT_EQ(recorder.changes(), 3);
}

TEST_P(AudioConformance, ALostServerIsOneChangeAndItsReturnAnother) {
    plugFirst(16000, 1);
    record();
    world->killServer();
    EXPECT_TRUE(changed(2));
    EXPECT_EQ(recorder.format().sampleRate, 0);
    world->restartServer(48000);
    EXPECT_TRUE(changed(3));
    ASSERT_TRUE(flows());
    hearsExactly(5000, 48000, 1);
}

TEST_P(AudioConformance, ADroppedObservationIsNotCalled) {
    int calls = 0;
    auto observation = world->service().observeConfigurationChange([&] { ++calls; });
    world->plug(16000, 1);
    EXPECT_TRUE(changed(1));
    EXPECT_EQ(calls, 1);
    observation.reset();
    world->unplug();
    EXPECT_TRUE(changed(2));
    EXPECT_EQ(calls, 1);
}

TEST_P(AudioConformance, AnObserverMayDropItsObservationWhileItIsCalled) {
    int calls = 0;
    std::unique_ptr<platform::AudioObservation> observation;
    observation = world->service().observeConfigurationChange([&] {
        ++calls;
        observation.reset();
    });
    world->plug(16000, 1);
    EXPECT_TRUE(changed(1));
    world->unplug();
    EXPECT_TRUE(changed(2));
    EXPECT_EQ(calls, 1);
}

TEST_P(AudioConformance, AuthorizationFollowsWhatIsOffered) {
    const auto statusBecomes = [this](platform::AuthorizationStatus status) {
        return within([&] {
            return world->authorization().authorizationStatusForAudio() == static_cast<int>(status);
        });
    };
    EXPECT_TRUE(statusBecomes(platform::AuthorizationStatus::denied));
    world->plug(16000, 1);
    EXPECT_TRUE(statusBecomes(platform::AuthorizationStatus::authorized));
    world->unplug();
    EXPECT_TRUE(statusBecomes(platform::AuthorizationStatus::denied));
    world->killServer();
    EXPECT_TRUE(statusBecomes(platform::AuthorizationStatus::notDetermined));
    world->restartServer(16000);
    EXPECT_TRUE(statusBecomes(platform::AuthorizationStatus::authorized));
}

TEST_P(AudioConformance, ARequestForAccessIsAnsweredOnceWithOrWithoutAServer) {
    const auto answersOnce = [this](bool expected) {
        auto granted = std::make_shared<std::atomic<int>>(0);
        auto refused = std::make_shared<std::atomic<int>>(0);
        world->authorization().requestAccessForAudio(
            [=](bool isGranted) { ++(isGranted ? *granted : *refused); });
        within([&] { return *granted + *refused > 0; });
        world->settle();
        return *granted == (expected ? 1 : 0) && *refused == (expected ? 0 : 1);
    };
    EXPECT_TRUE(answersOnce(false));
    world->plug(16000, 1);
    ASSERT_TRUE(changed(1));
    EXPECT_TRUE(answersOnce(true));
    world->killServer();
    ASSERT_TRUE(changed(2));
    EXPECT_TRUE(answersOnce(false));
}

INSTANTIATE_TEST_SUITE_P(Worlds, AudioConformance, everyAudioWorld(), nameOf);

}  // namespace

}  // namespace tarvik::tests
