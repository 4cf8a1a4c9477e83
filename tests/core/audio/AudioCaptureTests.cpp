// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "audio/AudioCapture.h"
#include "tests/support/SimulatedPlatform.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

constexpr auto changed = "TarvikDictate: audio configuration changed — rebuilding engine";
constexpr auto noFormat =
    "AudioCapture: input has no format (mic permission missing or no device?)";

class Capture : public testing::Test {
  protected:
    Capture() : capture(std::make_unique<AudioCapture>(platform.audio(), platform.log())) {}
    ~Capture() override {
        if (capture) {
            capture->stop();
        }
    }

    void start() {
        capture->start([this](PcmChunk chunk) { chunks.push_back(std::move(chunk)); });
    }
    void changeConfiguration() {
        platform.audio().changeConfiguration();
        platform.runUntilIdle();
    }

    simulated::SimulatedPlatform platform;
    Lines chunks;
    std::unique_ptr<AudioCapture> capture;
};

TEST_F(Capture, ConstructionMakesAnEngineAndObservesTheConfiguration) {
    EXPECT_EQ(platform.journal().lines(), Lines({"makeEngine", "observeConfigurationChange"}));
}

TEST_F(Capture, StartInstallsATapOf2048FramesInTheInputFormat) {
    platform.audio().setInputFormat({44100, 2});
    start();
    EXPECT_EQ(platform.audio().lastEngine()->calls(),
              Lines({"inputFormat 0", "installTap 0 2048 44100", "prepare", "start"}));
    EXPECT_TRUE(platform.audio().lastEngine()->isRunning());
    EXPECT_TRUE(platform.log().lines().empty());
}

TEST_F(Capture, EachBufferIsOneChunk) {
    start();
    platform.audio().deliver({{0.5F, -0.5F}});
    platform.audio().deliver({{1.0F}, {0.0F}});
    EXPECT_EQ(chunks, Lines({std::string("\xFF\x3F\x01\xC0", 4), std::string("\xFF\x3F", 2)}));
}

TEST_F(Capture, BufferOfZeroFramesIsPassedOnAsAnEmptyChunk) {
    start();
    EXPECT_TRUE(platform.audio().deliver(std::vector<std::vector<float>>(1)));
    EXPECT_EQ(chunks, Lines({""}));
}

TEST_F(Capture, BufferWithoutFloatSamplesIsDropped) {
    start();
    EXPECT_TRUE(platform.audio().deliverWithoutFloatSamples(64));
    EXPECT_TRUE(chunks.empty());
}

TEST_F(Capture, FormatWithoutChannelsIsAccepted) {
    platform.audio().setInputFormat({48000, 0});
    start();
    EXPECT_TRUE(platform.audio().deliver({{0.25F}}, 0));
    EXPECT_EQ(chunks, Lines({std::string("\xFF\x7F", 2)}));
}

TEST_F(Capture, ChunksComeOnTheThreadThatDeliversTheBuffer) {
    std::thread::id seen;
    capture->start([&](PcmChunk) { seen = std::this_thread::get_id(); });
    std::thread::id delivery;
    std::thread thread([&] {
        delivery = std::this_thread::get_id();
        platform.audio().deliver({{0.5F}});
    });
    thread.join();
    EXPECT_EQ(seen, delivery);
}

TEST_F(Capture, StartingTwiceKeepsTheFirstCallbackAndOneTap) {
    start();
    bool second = false;
    capture->start([&](PcmChunk) { second = true; });
    platform.audio().deliver({{0.5F}});
    EXPECT_EQ(chunks.size(), 1U);
    EXPECT_FALSE(second);
    EXPECT_EQ(platform.audio().lastEngine()->calls(),
              Lines({"inputFormat 0", "installTap 0 2048 48000", "prepare", "start"}));
}

class CaptureWithoutRate : public testing::TestWithParam<double> {};

TEST_P(CaptureWithoutRate, IsLoggedAndCapturesNothing) {
    simulated::SimulatedPlatform platform;
    AudioCapture capture(platform.audio(), platform.log());
    platform.audio().setInputFormat({GetParam(), 1});
    capture.start([](PcmChunk) {});
    EXPECT_EQ(platform.log().lines(), Lines({noFormat}));
    EXPECT_EQ(platform.audio().lastEngine()->calls(), Lines({"inputFormat 0"}));
    // The capture is still idle, so the next start captures a microphone that exists by then.
    platform.audio().setInputFormat({48000, 1});
    capture.start([](PcmChunk) {});
    EXPECT_TRUE(platform.audio().lastEngine()->isRunning());
    capture.stop();
}

INSTANTIATE_TEST_SUITE_P(Rates, CaptureWithoutRate,
                         testing::Values(0.0, -48000.0, std::numeric_limits<double>::quiet_NaN()));

TEST_F(Capture, AnyRateAboveZeroIsAFormat) {
    platform.audio().setInputFormat({0.5, 1});
    start();
    EXPECT_TRUE(platform.audio().lastEngine()->isRunning());
}

TEST_F(Capture, FailedEngineStartIsLoggedAndTheTapRemoved) {
    platform.audio().setStartFailure(Error{16, "device busy"});
    start();
    EXPECT_EQ(platform.log().lines(), Lines({"AudioCapture: engine.start failed — device busy"}));
    EXPECT_EQ(
        platform.audio().lastEngine()->calls(),
        Lines({"inputFormat 0", "installTap 0 2048 48000", "prepare", "start", "removeTap 0"}));
    // The capture is idle: a configuration change rebuilds nothing, a stop does nothing, and a
    // start tries again.
    changeConfiguration();
    capture->stop();
    EXPECT_EQ(platform.audio().engines().size(), 1U);
    platform.audio().setStartFailure(std::nullopt);
    start();
    EXPECT_TRUE(platform.audio().deliver({{0.5F}}));
    EXPECT_EQ(chunks.size(), 1U);
}

TEST_F(Capture, FailedStartKeepsTheCallbackUntilTheNextStart) {
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> watched = held;
    platform.audio().setStartFailure(Error{16, "device busy"});
    capture->start([held = std::move(held)](PcmChunk) {});
    capture->stop();
    EXPECT_FALSE(watched.expired());
    start();
    EXPECT_TRUE(watched.expired());
}

TEST_F(Capture, CaptureWithoutACallbackIsNotRebuilt) {
    capture->start({});
    EXPECT_TRUE(platform.audio().lastEngine()->isRunning());
    EXPECT_TRUE(platform.audio().deliver({{0.5F}}));
    changeConfiguration();
    EXPECT_EQ(platform.log().lines(), Lines({changed}));
    EXPECT_EQ(platform.audio().engines().size(), 1U);
    capture->stop();
    EXPECT_FALSE(platform.audio().lastEngine()->isRunning());
}

TEST_F(Capture, StopRemovesTheTapAndStopsTheEngine) {
    start();
    capture->stop();
    EXPECT_EQ(platform.audio().lastEngine()->calls(),
              Lines({"inputFormat 0", "installTap 0 2048 48000", "prepare", "start", "removeTap 0",
                     "stop"}));
    EXPECT_FALSE(platform.audio().deliver({{0.5F}}));
    EXPECT_TRUE(chunks.empty());
    EXPECT_TRUE(platform.log().lines().empty());
}

TEST_F(Capture, StopWhenIdleDoesNothing) {
    capture->stop();
    EXPECT_TRUE(platform.audio().lastEngine()->calls().empty());
    start();
    capture->stop();
    const Lines calls = platform.audio().lastEngine()->calls();
    capture->stop();
    EXPECT_EQ(platform.audio().lastEngine()->calls(), calls);
}

TEST_F(Capture, StopReleasesTheCallback) {
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> watched = held;
    capture->start([held = std::move(held)](PcmChunk) {});
    EXPECT_FALSE(watched.expired());
    capture->stop();
    EXPECT_TRUE(watched.expired());
}

TEST_F(Capture, AfterAStopAConfigurationChangeDoesNotRestartTheCapture) {
    start();
    capture->stop();
    changeConfiguration();
    EXPECT_EQ(platform.audio().engines().size(), 1U);
    EXPECT_FALSE(platform.audio().lastEngine()->isRunning());
}

TEST_F(Capture, StartAfterStopUsesTheNewCallback) {
    start();
    capture->stop();
    bool second = false;
    capture->start([&](PcmChunk) { second = true; });
    platform.audio().deliver({{0.5F}});
    EXPECT_TRUE(second);
    EXPECT_TRUE(chunks.empty());
    EXPECT_EQ(platform.audio().engines().size(), 1U);
}

TEST_F(Capture, ConfigurationChangeWhileIdleOnlyLogs) {
    platform.journal().clear();
    changeConfiguration();
    EXPECT_EQ(platform.journal().lines(), Lines({std::string("log ") + changed}));
}

TEST_F(Capture, ConfigurationChangeWhileCapturingRebuildsTheEngineWithTheSameCallback) {
    start();
    platform.journal().clear();
    platform.audio().setInputFormat({16000, 1});
    changeConfiguration();
    EXPECT_EQ(platform.journal().lines(),
              Lines({std::string("log ") + changed, "audio removeTap 0", "audio stop", "makeEngine",
                     "audio inputFormat 0", "audio installTap 0 2048 16000", "audio prepare",
                     "audio start"}));
    ASSERT_EQ(platform.audio().engines().size(), 2U);
    EXPECT_FALSE(platform.audio().engines()[0]->isAlive());
    EXPECT_TRUE(platform.audio().engines()[1]->isRunning());
    EXPECT_TRUE(platform.audio().deliver({{0.5F}}));
    EXPECT_EQ(chunks, Lines({std::string("\xFF\x3F", 2)}));
}

TEST_F(Capture, CurrentEngineHasTheNewFormatAfterARebuild) {
    start();
    platform.audio().setInputFormat({16000, 1});
    changeConfiguration();
    EXPECT_EQ(capture->engine().inputNode().inputFormatForBus(0).sampleRate, 16000);
}

TEST_F(Capture, FailedRestartLeavesTheCaptureSilentUntilTheStop) {
    start();
    platform.audio().setStartFailure(Error{16, "device busy"});
    changeConfiguration();
    EXPECT_EQ(platform.log().lines(),
              Lines({changed, "AudioCapture: engine.start failed — device busy"}));
    EXPECT_FALSE(platform.audio().deliver({{0.5F}}));
    // The capture still counts as running, so a start does nothing.
    platform.audio().setStartFailure(std::nullopt);
    bool second = false;
    capture->start([&](PcmChunk) { second = true; });
    EXPECT_FALSE(platform.audio().deliver({{0.5F}}));
    capture->stop();
    capture->start([&](PcmChunk) { second = true; });
    EXPECT_TRUE(platform.audio().deliver({{0.5F}}));
    EXPECT_TRUE(second);
}

TEST_F(Capture, SilentCaptureResumesAtTheNextConfigurationChange) {
    start();
    platform.audio().removeInput();
    changeConfiguration();
    EXPECT_EQ(platform.log().lines(), Lines({changed, noFormat}));
    EXPECT_FALSE(platform.audio().deliver({{0.5F}}));
    platform.audio().setInputFormat({48000, 1});
    changeConfiguration();
    EXPECT_TRUE(platform.audio().deliver({{0.5F}}));
    EXPECT_EQ(chunks.size(), 1U);
}

TEST_F(Capture, DestructionEndsTheObservationAndMakesNoEngineCalls) {
    start();
    const auto engine = platform.audio().lastEngine();
    const Lines calls = engine->calls();
    capture.reset();
    EXPECT_EQ(platform.audio().observers(), 0U);
    EXPECT_FALSE(engine->isAlive());
    EXPECT_EQ(engine->calls(), calls);
}

TEST_F(Capture, TapOfADestroyedCaptureDeliversNothing) {
    start();
    const platform::AudioTapBlock tap = platform.audio().lastEngine()->tap();
    capture.reset();
    const float sample = 0.5F;
    const float* channel = &sample;
    tap({&channel, 1, {48000, 1}});
    changeConfiguration();
    EXPECT_TRUE(chunks.empty());
    EXPECT_TRUE(platform.log().lines().empty());
}

}  // namespace
}  // namespace tarvik
