// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <future>

#include "tests/conformance/audio/AudioRecorder.h"
#include "tests/conformance/audio/PulseWorld.h"
#include "tests/conformance/audio/TestTone.h"
#include "tests/linux/audio/ManualMicrophone.h"
#include "tests/linux/audio/ReportedRate.h"

namespace tarvik::tests {

namespace {

constexpr std::chrono::seconds timeout{20};

class AudioPulse : public testing::Test {
  protected:
    bool within(const std::function<bool()>& condition) {
        return world.runUntil(condition, timeout);
    }

    void plugFirst(std::uint32_t sampleRate) {
        world.plug(sampleRate, 1);
        ASSERT_TRUE(within([this] { return recorder.changes() == 1; }));
    }

    void record() {
        ASSERT_FALSE(recorder.start());
        ASSERT_TRUE(within([this] { return recorder.buffers() > 0; }));
    }

    bool streamsBecome(std::size_t count) {
        return within([this, count] { return world.openStreams() == count; });
    }

    /// The server's index of the only recording stream.
    std::string streamIndex() {
        const std::string list = world.server().control({"list", "short", "source-outputs"});
        return list.substr(0, list.find('\t'));
    }

    PulseWorld world;
    AudioRecorder recorder{world.service()};
};

/// Listens to the silent sink's monitor until something loud is heard there.
bool monitorIsLoud(PulseWorld& world) {
    TestProcess monitor({"parec", "--raw", "--device=auto_null.monitor"},
                        {.errorOutput = TestProcess::ErrorOutput::dropped});
    std::string heard;
    const bool isLoud = world.runUntil(
        [&] {
            monitor.readOutput(heard);
            return std::any_of(heard.begin(), heard.end(), [](char byte) { return byte != 0; });
        },
        timeout);
    monitor.send(SIGTERM);
    monitor.waitForEnd();
    return isLoud;
}

void playLoudly(PulseWorld& world) {
    world.server().control({"load-module", "module-sine", "sink=auto_null", "frequency=440"});
    EXPECT_TRUE(monitorIsLoud(world));
}

TEST_F(AudioPulse, UnpluggingNeverRecordsTheLoudspeakers) {
    plugFirst(44100);
    playLoudly(world);
    record();
    recorder.ignoreChanges();
    world.unplug();
    ASSERT_TRUE(within([this] { return recorder.changes() == 2; }));
    EXPECT_TRUE(monitorIsLoud(world));
    world.settle();
    EXPECT_NE(world.server().control({"get-default-source"}).find(".monitor"), std::string::npos);
    EXPECT_EQ(world.openStreams(), 0U);
    EXPECT_EQ(loudSamples(recorder.heard(0)), 0);
    EXPECT_TRUE(recorder.start());
}

TEST_F(AudioPulse, AnOpenStreamDoesNotRecordTheLoudspeakersWhenTheMicrophoneIsUnplugged) {
    plugFirst(44100);
    playLoudly(world);
    ASSERT_EQ(recorder.format().sampleRate, 44100);
    ASSERT_TRUE(streamsBecome(1));
    world.unplug();
    // The main queue gets no turn in between, so that the engine starts with old knowledge.
    recorder.start();
    recorder.ignoreChanges();
    ASSERT_TRUE(within([this] { return recorder.changes() >= 2; }));
    EXPECT_TRUE(monitorIsLoud(world));
    world.settle();
    EXPECT_TRUE(streamsBecome(0));
    EXPECT_EQ(loudSamples(recorder.heard(0)), 0);
}

TEST_F(AudioPulse, AMonitorMadeTheDefaultSourceIsNoMicrophone) {
    plugFirst(16000);
    playLoudly(world);
    record();
    world.server().control({"set-default-source", "auto_null.monitor"});
    ASSERT_TRUE(within([this] { return recorder.changes() == 2; }));
    EXPECT_EQ(recorder.format().sampleRate, 0);
    world.settle();
    EXPECT_EQ(loudSamples(recorder.heard(0)), 0);
    EXPECT_EQ(world.authorization().authorizationStatusForAudio(), 3);
}

TEST_F(AudioPulse, TheServerCannotMoveTheStreamToTheMonitor) {
    plugFirst(16000);
    playLoudly(world);
    record();
    EXPECT_NE(
        runQuietly({"pactl", "move-source-output", streamIndex(), "auto_null.monitor"}).status, 0);
    recorder.forget();
    ASSERT_TRUE(within([this] { return recorder.buffers() > 2; }));
    EXPECT_EQ(loudSamples(recorder.heard(0)), 0);
}

/// The authorization status that a new service reports first.
int firstStatus(platform::MainQueue& mainQueue, platform::Log& log) {
    linuxdesktop::PulseAudioService service(mainQueue, log);
    const auto isKnown = std::make_shared<std::promise<void>>();
    service.whenFirstKnown([isKnown] { isKnown->set_value(); });
    EXPECT_EQ(isKnown->get_future().wait_for(timeout), std::future_status::ready);
    return service.authorizationStatusForAudio();
}

TEST_F(AudioPulse, TheFirstStatusIsThatOfTheServerOrThatThereIsNoServer) {
    RealTimeQueue mainQueue;
    RecordingLog log;
    EXPECT_EQ(firstStatus(mainQueue, log), 2);
    plugFirst(16000);
    EXPECT_EQ(firstStatus(mainQueue, log), 3);
    world.killServer();
    EXPECT_EQ(firstStatus(mainQueue, log), 0);
}

TEST_F(AudioPulse, ThePermissionFollowsTheHardwareWithinASecond) {
    const auto becomes = [this](int status) {
        return world.runUntil(
            [&] { return world.authorization().authorizationStatusForAudio() == status; },
            std::chrono::seconds(1));
    };
    EXPECT_TRUE(becomes(2));
    world.plug(16000, 1);
    EXPECT_TRUE(becomes(3));
    world.killServer();
    EXPECT_TRUE(becomes(0));
    world.restartServer(16000);
    EXPECT_TRUE(becomes(3));
    world.unplug();
    EXPECT_TRUE(becomes(2));
}

TEST_F(AudioPulse, NoCallWaitsForAServerThatHangs) {
    plugFirst(16000);
    world.server().freeze(true);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(recorder.format().sampleRate, 16000);
    EXPECT_FALSE(recorder.start());
    EXPECT_EQ(world.authorization().authorizationStatusForAudio(), 3);
    recorder.stop();
    EXPECT_FALSE(recorder.start());
    // Only time can show this: a call that waits for the frozen server would hang.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    world.server().freeze(false);
    EXPECT_TRUE(within([this] { return recorder.buffers() > 0; }));
    EXPECT_TRUE(streamsBecome(1));
}

TEST_F(AudioPulse, ReadingTheFormatOpensOneStreamThatDoesNotRecord) {
    plugFirst(16000);
    EXPECT_EQ(world.openStreams(), 0U);
    EXPECT_EQ(recorder.format().sampleRate, 16000);
    EXPECT_EQ(recorder.format().sampleRate, 16000);
    ASSERT_TRUE(streamsBecome(1));
    EXPECT_NE(world.server().control({"list", "source-outputs"}).find("Corked: yes"),
              std::string::npos);
    record();
    EXPECT_EQ(world.openStreams(), 1U);
}

TEST_F(AudioPulse, SoundFromBeforeTheStartIsNotDelivered) {
    ManualMicrophone microphone(world.server());
    ASSERT_TRUE(within([this] { return recorder.changes() == 1; }));
    const auto engine = world.service().makeEngine();
    const platform::AudioFormat format = engine->inputNode().inputFormatForBus(0);
    ASSERT_TRUE(streamsBecome(1));

    std::atomic<int> oldCount = 0;
    std::atomic<bool> hasNew = false;
    std::chrono::steady_clock::time_point lastOld;
    engine->inputNode().installTapOnBus(0, 1, format, [&](const platform::AudioPcmBuffer& buffer) {
        if (buffer.floatChannelData[0][0] > 0) {
            ++oldCount;
            lastOld = std::chrono::steady_clock::now();
        } else {
            hasNew = true;
        }
    });
    // 40 ms of sound that the hardware holds, as the buffer of a sound card does.
    microphone.write(ManualMicrophone::sampleRate / 25, 10000);
    const auto start = std::chrono::steady_clock::now();
    ASSERT_FALSE(engine->start());
    ASSERT_TRUE(within([&] {
        microphone.write(16, -10000);
        return hasNew.load();
    }));
    engine->stop();
    // The engine does not know how long a sample was on its way, so it may take the old sound for
    // the sound since the start.
    const double sinceStart = oldCount > 0 ? Seconds(lastOld - start).count() : 0;
    EXPECT_LE(oldCount, std::ceil(sinceStart * ManualMicrophone::sampleRate));
}

TEST_F(AudioPulse, AStreamThatIsNotStartedIsClosedWhenNoConnectionOpensAnyMore) {
    plugFirst(16000);
    recorder.format();
    ASSERT_TRUE(streamsBecome(1));
    // A connection opens within five seconds or not at all.
    EXPECT_TRUE(
        world.runUntil([this] { return world.openStreams() == 0; }, std::chrono::seconds(7)));
    record();
    EXPECT_EQ(recorder.changes(), 1);
}

TEST_F(AudioPulse, AnOpenStreamThatIsStartedStaysOpen) {
    plugFirst(16000);
    recorder.format();
    record();
    // Longer than an unused stream stays open.
    world.runFor(std::chrono::milliseconds(5500));
    EXPECT_EQ(world.openStreams(), 1U);
    recorder.forget();
    EXPECT_TRUE(within([this] { return recorder.buffers() > 0; }));
    EXPECT_EQ(recorder.changes(), 1);
}

TEST_F(AudioPulse, NothingOfTheMicrophoneIsOpenAfterStop) {
    plugFirst(16000);
    record();
    recorder.stop();
    EXPECT_TRUE(streamsBecome(0));
    // Also when the server had no time to open the stream.
    ASSERT_FALSE(recorder.start());
    recorder.stop();
    world.settle();
    EXPECT_TRUE(streamsBecome(0));
}

TEST_F(AudioPulse, AnIdleMicrophoneThatIsSuspendedAndResumedIsNoChange) {
    const auto isSuspended = [this] {
        const std::string sources = world.server().control({"list", "short", "sources"});
        const std::size_t line = sources.find("mic1\t");
        return sources.substr(line, sources.find('\n', line) - line).find("SUSPENDED") !=
               std::string::npos;
    };
    plugFirst(16000);
    ASSERT_TRUE(within(isSuspended));
    record();
    recorder.stop();
    // A stream that is open but corked keeps the microphone asleep too.
    recorder.format();
    ASSERT_TRUE(streamsBecome(1));
    ASSERT_TRUE(within(isSuspended));
    recorder.forget();
    record();
    world.settle();
    EXPECT_EQ(recorder.changes(), 1);
}

TEST_F(AudioPulse, AStreamThatTheServerEndsIsOneChangeAndIsOpenedAgain) {
    plugFirst(16000);
    record();
    world.server().killStream(streamIndex());
    ASSERT_TRUE(within([this] { return recorder.changes() == 2; }));
    recorder.forget();
    EXPECT_TRUE(within([this] { return recorder.buffers() > 0; }));
    world.settle();
    EXPECT_EQ(recorder.changes(), 2);
}

TEST_F(AudioPulse, AVolumeThatChangesIsNoConfigurationChange) {
    plugFirst(16000);
    record();
    for (const char* volume : {"20%", "40%", "60%", "100%"}) {
        world.server().control({"set-source-volume", "mic1", volume});
    }
    world.server().control({"load-module", "module-null-sink", "sink_name=another"});
    world.settle();
    EXPECT_EQ(recorder.changes(), 1);
}

TEST_F(AudioPulse, ARateThatASourceReportsOnceItRunsIsNoConfigurationChange) {
    plugFirst(48000);
    EXPECT_EQ(recorder.format().sampleRate, 48000);
    const ReportedRate reported(44100);
    const auto hearsOfTheRate = [&](const char* volume) {
        const int before = reported.lists();
        world.server().control({"set-source-volume", "mic1", volume});
        return within([&] { return reported.lists() > before; });
    };
    ASSERT_TRUE(hearsOfTheRate("90%"));
    EXPECT_EQ(recorder.format().sampleRate, 48000);
    record();
    ASSERT_TRUE(hearsOfTheRate("100%"));
    world.settle();
    EXPECT_EQ(recorder.changes(), 1);
    EXPECT_EQ(recorder.format().sampleRate, 48000);
    recorder.forget();
    ASSERT_TRUE(within([this] { return recorder.buffers() > 0; }));
    EXPECT_EQ(recorder.lastFormat().sampleRate, 48000);
    EXPECT_EQ(world.openStreams(), 1U);
    // The next recording uses what the source says now.
    recorder.stop();
    EXPECT_EQ(recorder.format().sampleRate, 44100);
}

class AudioPulseAtALowRate : public AudioPulse, public testing::WithParamInterface<int> {};

TEST_P(AudioPulseAtALowRate, TheLastWordIsThereBeforeAStop) {
    const auto rate = static_cast<std::uint32_t>(GetParam());
    plugFirst(rate);
    record();
    recorder.forget();
    const std::size_t frameCount = rate / 5;
    world.speak(tone(frameCount, 1));
    // The speaking itself takes 0.2 s, and a recording stops 0.3 s after it.
    EXPECT_TRUE(world.runUntil(
        [&] { return loudSamples(recorder.heard(0)) == static_cast<std::ptrdiff_t>(frameCount); },
        std::chrono::milliseconds(500)));
    for (const std::uint32_t length : recorder.lengths()) {
        EXPECT_EQ(length, rate / 20);
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, AudioPulseAtALowRate, testing::Values(8000, 16000));

TEST_F(AudioPulse, StartingOnASuspendedMicrophoneRecordsAsSoonAsItIsResumed) {
    plugFirst(16000);
    world.suspend(true);
    ASSERT_FALSE(recorder.start());
    world.settle();
    EXPECT_EQ(recorder.buffers(), 0U);
    EXPECT_EQ(recorder.changes(), 1);
    world.suspend(false);
    EXPECT_TRUE(within([this] { return recorder.buffers() > 0; }));
    world.settle();
    EXPECT_EQ(recorder.changes(), 2);
}

TEST_F(AudioPulse, AServerThatIsAwayForLongIsFoundAsSoonAsItIsBack) {
    plugFirst(16000);
    record();
    world.killServer();
    ASSERT_TRUE(within([this] { return recorder.changes() == 2; }));
    // Until the interval between attempts exceeds the timeout below.
    world.runFor(std::chrono::seconds(7));
    world.restartServer(16000);
    EXPECT_TRUE(
        world.runUntil([this] { return recorder.changes() == 3; }, std::chrono::seconds(2)));
    recorder.forget();
    EXPECT_TRUE(within([this] { return recorder.buffers() > 0; }));
}

TEST_F(AudioPulse, EnginesMayBeDestroyedAtAnyTime) {
    plugFirst(16000);
    for (int round = 0; round < 20; ++round) {
        const auto engine = world.service().makeEngine();
        engine->inputNode().inputFormatForBus(0);
        engine->inputNode().installTapOnBus(0, 64, {}, [](const platform::AudioPcmBuffer&) {});
        EXPECT_FALSE(engine->start());
        if (round % 2 == 0) {
            world.runFor(std::chrono::milliseconds(20 * round));
        }
    }
    EXPECT_TRUE(streamsBecome(0));
}

}  // namespace

}  // namespace tarvik::tests
