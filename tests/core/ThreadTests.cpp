// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <thread>

#include "tests/core/app/ApplicationUnderTest.h"
#include "tests/core/speech/ClientUnderTest.h"
#include "tests/support/JoiningThread.h"

// State that several threads share, tested with real threads. The thread sanitizer finds most here.

namespace tarvik {
namespace {

using simulated::JoiningThread;

constexpr int rounds = 200;
// Fewer rounds where each round waits for another thread several times: such rounds are slow on a
// busy machine.
constexpr int waitingRounds = 30;

/// A thread that delivers buffers all the time.
class Speaker {
  public:
    explicit Speaker(simulated::SimulatedAudio& audio)
        : thread_([this, &audio] {
              while (!isSilenced_) {
                  audio.deliver({{0.5F, 0.5F}});
                  ++deliveries_;
                  // Like a microphone, with pauses. Without them no other thread could lock the
                  // tap.
                  std::this_thread::sleep_for(std::chrono::microseconds(200));
              }
          }) {}

    ~Speaker() { isSilenced_ = true; }

    int deliveries() const { return deliveries_; }

  private:
    std::atomic<bool> isSilenced_ = false;
    std::atomic<int> deliveries_ = 0;
    JoiningThread thread_;
};

TEST(Threads, ChunksGoToTheCurrentClientWhileClientsAreReplaced) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    Speaker speaker(app.platform.audio());
    for (int round = 0; round < waitingRounds; ++round) {
        app.startStreaming();
        auto& socket = app.socket();
        ASSERT_TRUE(app.platform.time().runUntil([&] { return socket.sentMessages() > 1; }));
        app.releaseHold();
        const std::size_t sentAtStop = socket.sentMessages();
        const int before = speaker.deliveries();
        ASSERT_TRUE(
            app.platform.time().runUntil([&] { return speaker.deliveries() > before + 2; }));
        // Only the chunk that was being delivered at the stop may still arrive.
        EXPECT_LE(socket.sentMessages(), sentAtStop + 1);
        app.platform.advance(Seconds(round % 2 == 0 ? 0.1 : 0.4));
    }
    for (const auto& task : app.platform.webSockets().tasks()) {
        for (const std::string& chunk : task->sentData()) {
            ASSERT_EQ(chunk, std::string("\xFF\x3F\xFF\x3F", 4));
        }
    }
}

TEST(Threads, EngineIsRebuiltWhileBuffersAreDelivered) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.startStreaming();
    Speaker speaker(app.platform.audio());
    for (int round = 0; round < waitingRounds; ++round) {
        app.platform.audio().setInputFormat({round % 2 == 0 ? 16000.0 : 48000.0, 1});
        app.platform.audio().changeConfiguration();
        app.platform.runUntilIdle();
        const std::size_t before = app.socket().sentMessages();
        ASSERT_TRUE(
            app.platform.time().runUntil([&] { return app.socket().sentMessages() > before; }));
    }
    EXPECT_EQ(app.platform.audio().engines().size(), static_cast<std::size_t>(waitingRounds) + 1);
}

TEST(Threads, CaptureIsStartedAndStoppedWhileBuffersAreDelivered) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    Speaker speaker(app.platform.audio());
    for (int round = 0; round < waitingRounds; ++round) {
        app.startStreaming();
        app.platform.workspace().wake();
        app.platform.advance(Seconds(2));
        EXPECT_FALSE(app.isCapturing());
    }
}

TEST(Threads, FinishCompletesOnceWhenTheCloseRacesTheCloseDeadline) {
    for (int round = 0; round < rounds; ++round) {
        ClientUnderTest test;
        test.connectAndOpen();
        test.platform.webSockets().setAutomatic(false);
        std::atomic<int> finishes = 0;
        test.client->finish([&] { ++finishes; });
        auto& session = *test.platform.webSockets().sessions().back();
        test.task().close();
        std::barrier together(2);
        JoiningThread delegateQueue([&] {
            together.arrive_and_wait();
            session.runDelegateQueue();
        });
        together.arrive_and_wait();
        test.platform.advance(Seconds(2));
        delegateQueue.join();
        test.platform.runUntilIdle();
        ASSERT_EQ(finishes, 1);
    }
}

TEST(Threads, ConnectCompletesOnceWhenTheCloseRacesTheOpenDeadline) {
    for (int round = 0; round < rounds; ++round) {
        ClientUnderTest test;
        test.platform.webSockets().setAutomatic(false);
        test.connect();
        auto& session = *test.platform.webSockets().sessions().back();
        test.task().close();
        std::barrier together(2);
        JoiningThread delegateQueue([&] {
            together.arrive_and_wait();
            session.runDelegateQueue();
        });
        together.arrive_and_wait();
        test.platform.advance(Seconds(5));
        delegateQueue.join();
        test.platform.runUntilIdle();
        ASSERT_EQ(test.connects, std::vector<bool>({false}));
    }
}

TEST(Threads, AudioIsSentWhileTheServiceCloses) {
    for (int round = 0; round < rounds; ++round) {
        ClientUnderTest test;
        test.connectAndOpen();
        test.platform.webSockets().setAutomatic(false);
        auto& session = *test.platform.webSockets().sessions().back();
        std::barrier together(3);
        JoiningThread audio([&] {
            together.arrive_and_wait();
            for (int chunk = 0; chunk < 20; ++chunk) {
                test.client->send("ab");
            }
        });
        JoiningThread delegateQueue([&] {
            together.arrive_and_wait();
            test.task().notifyClose();
            session.runDelegateQueue();
        });
        together.arrive_and_wait();
        test.finish();
        test.platform.advance(Seconds(2));
        audio.join();
        delegateQueue.join();
        session.runDelegateQueue();
        test.platform.runUntilIdle();
        EXPECT_EQ(test.count("finished"), 1);
    }
}

TEST(Threads, TranscriptsReachTheMainThreadInOrder) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.platform.webSockets().setAutomatic(false);
    auto& session = *test.platform.webSockets().sessions().back();
    JoiningThread delegateQueue([&] {
        for (int i = 0; i < rounds; ++i) {
            test.task().deliverText(simulated::transcriptJson(std::to_string(i), true));
            session.runDelegateQueue();
        }
    });
    ASSERT_TRUE(test.platform.time().runUntil(
        [&] { return test.transcripts.size() == static_cast<std::size_t>(rounds); }));
    for (std::size_t i = 0; i < test.transcripts.size(); ++i) {
        EXPECT_EQ(test.transcripts[i].text, std::to_string(i));
    }
    EXPECT_EQ(test.deliveriesOffMain, 0);
}

TEST(Threads, MicrophonePermissionMayBeAnsweredOnAnyThread) {
    ApplicationUnderTest app;
    app.platform.captureAuthorization().isAnswerHeld = true;
    app.launch();
    JoiningThread answering([&] { app.platform.captureAuthorization().answer(true); });
    EXPECT_TRUE(app.platform.time().runUntil([&] {
        return app.platform.log().count("TarvikDictate: launch-time mic request → true") == 1;
    }));
}

}  // namespace
}  // namespace tarvik
