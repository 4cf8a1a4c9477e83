// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <limits>

#include "tests/core/app/ApplicationUnderTest.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

constexpr auto closeStream = R"({"type":"CloseStream"})";

class Session : public testing::Test {
  protected:
    Session() {
        app.platform.workspace().setFrontmostProcess(ApplicationUnderTest::editor);
        app.launchAndSettle();
    }

    ApplicationUnderTest app;
};

TEST_F(Session, StartTakesItsStepsInOrder) {
    app.pressHold();
    EXPECT_EQ(app.platform.journal().lines(),
              Lines({"log TarvikDictate: startRecording (session=1)", "frontmostApplication",
                     "copyAttributeValue AXFocusedUIElement", "setImage mic.fill",
                     "setContentTintColor red", "audio inputFormat 0", "makeSession",
                     "webSocketTask wss://api.deepgram.com/v1/listen?model=nova-3&smart_format=true"
                     "&punctuate=true&interim_results=true&mip_opt_out=true&encoding=linear16"
                     "&sample_rate=48000&channels=1"}));
    EXPECT_TRUE(app.isRecording());
    EXPECT_EQ(app.sessions(), 1U);
    EXPECT_EQ(app.platform.time().runningTimers(), 1U);
}

TEST_F(Session, CaptureStartsOnlyOnceTheConnectionIsOpen) {
    app.pressHold();
    EXPECT_FALSE(app.isCapturing());
    app.platform.advance(Seconds(1));
    EXPECT_FALSE(app.isCapturing());
    app.acceptConnection();
    EXPECT_TRUE(app.isCapturing());
}

TEST_F(Session, ChunksAreSentUnchanged) {
    app.startStreaming();
    app.platform.audio().deliver({{0.5F, -1.0F, 1.0F}});
    EXPECT_EQ(app.socket().sentData(), Lines({std::string("\xFF\x3F\x01\x80\xFF\x7F", 6)}));
}

TEST_F(Session, SecondPressWhileRecordingIsIgnored) {
    app.pressHold();
    app.pressHold();
    EXPECT_EQ(app.sessions(), 1U);
    EXPECT_EQ(app.platform.webSockets().tasks().size(), 1U);
}

TEST_F(Session, ReleaseWithoutARecordingIsIgnored) {
    app.releaseHold();
    app.delegate->stopRecording();
    EXPECT_EQ(app.logLines(), Lines());
    EXPECT_EQ(app.platform.time().waitingBlocks(), 0U);
}

TEST_F(Session, StopEndsTheCaptureAndClosesTheStreamThreeTenthsOfASecondLater) {
    app.startStreaming();
    app.platform.journal().clear();
    app.releaseHold();
    EXPECT_EQ(app.platform.journal().lines(),
              Lines({"setImage mic", "setContentTintColor none",
                     "log TarvikDictate: stopRecording (session=1)"}));
    EXPECT_FALSE(app.isRecording());
    EXPECT_EQ(app.platform.time().runningTimers(), 0U);
    app.platform.journal().clear();
    app.platform.advance(Seconds(0.29));
    EXPECT_TRUE(app.isCapturing());
    EXPECT_TRUE(app.socket().sentTexts().empty());
    app.platform.advance(Seconds(0.01));
    EXPECT_EQ(app.platform.journal().lines(),
              Lines({"audio removeTap 0", "audio stop", "log TarvikDictate: audio.stop (session=1)",
                     std::string("send ") + closeStream}));
    EXPECT_EQ(app.socket().sentTexts(), Lines({closeStream}));
}

TEST_F(Session, RunningCaptureHoldsTheDelegate) {
    app.startStreaming();
    const std::weak_ptr<AppDelegate> watched = app.delegate;
    app.delegate.reset();
    EXPECT_TRUE(app.speak());
    EXPECT_EQ(app.socket().sentData().size(), 1U);
    app.releaseHold();
    app.platform.advance(Seconds(0.3));
    EXPECT_FALSE(app.isCapturing());
    EXPECT_TRUE(watched.expired());
}

TEST_F(Session, ChunksAreDroppedDuringTheStopDelay) {
    app.startStreaming();
    app.releaseHold();
    EXPECT_TRUE(app.speak());
    EXPECT_TRUE(app.socket().sentData().empty());
}

TEST_F(Session, PressAndReleaseBeforeTheConnectionOpensCapturesNothing) {
    app.pressHold();
    app.releaseHold();
    app.platform.advance(Seconds(0.3));
    EXPECT_EQ(app.logLines(), Lines({"TarvikDictate: startRecording (session=1)",
                                     "TarvikDictate: stopRecording (session=1)",
                                     "TarvikDictate: audio.stop (session=1)"}));
    EXPECT_EQ(app.platform.audio().lastEngine()->calls(), Lines({"inputFormat 0"}));
    // The finish completed at once. Nothing was sent, and only the open deadline is still waiting.
    app.platform.advance(Seconds(4));
    EXPECT_TRUE(app.socket().cancels().empty());
}

TEST_F(Session, PressWithinTheStopDelayKeepsTheCaptureForTheNewClient) {
    app.startStreaming();
    auto& first = app.socket();
    app.releaseHold();
    app.platform.advance(Seconds(0.1));
    app.pressHold();
    auto& second = app.socket();
    app.platform.advance(Seconds(0.2));
    EXPECT_EQ(app.platform.log().count(
                  "TarvikDictate: deferred-stop SKIPPED — session 1 superseded by 2"),
              1U);
    EXPECT_TRUE(app.isCapturing());
    EXPECT_EQ(first.sentTexts(), Lines({closeStream}));
    EXPECT_TRUE(app.speak());
    EXPECT_TRUE(second.sentData().empty());
    app.acceptConnection();
    EXPECT_TRUE(app.speak());
    EXPECT_EQ(second.sentData().size(), 1U);
    EXPECT_TRUE(first.sentData().empty());
    // There was only one engine, and it was started once.
    EXPECT_EQ(app.platform.journal().count("audio start"), 1U);
    EXPECT_EQ(app.platform.audio().engines().size(), 1U);
}

TEST_F(Session, PressAfterTheStopDelayStartsTheCaptureAgain) {
    app.startStreaming();
    app.releaseHold();
    app.platform.advance(Seconds(0.3));
    app.startStreaming();
    EXPECT_TRUE(app.platform.log().linesWith("SKIPPED").empty());
    EXPECT_EQ(app.platform.journal().count("audio start"), 2U);
    EXPECT_EQ(app.sessions(), 2U);
}

TEST_F(Session, CaptureOfALateConnectionRunsUntilTheNextStop) {
    app.pressHold();
    app.releaseHold();
    app.platform.advance(Seconds(1));
    app.acceptConnection();
    EXPECT_TRUE(app.isCapturing());
    EXPECT_TRUE(app.speak());
    EXPECT_TRUE(app.socket().sentData().empty());
    app.platform.workspace().wake();
    app.platform.advance(Seconds(60));
    EXPECT_TRUE(app.isCapturing());

    app.startStreaming();
    EXPECT_TRUE(app.speak());
    EXPECT_EQ(app.socket().sentData().size(), 1U);
    app.releaseHold();
    app.platform.advance(Seconds(0.3));
    EXPECT_FALSE(app.isCapturing());
}

TEST_F(Session, FailedConnectionLeavesTheRecordingOnWithoutCapture) {
    app.pressHold();
    app.platform.advance(Seconds(5));
    EXPECT_EQ(
        app.platform.log().count("TarvikDictate: Deepgram WS open timeout (5s) — connect failed"),
        1U);
    EXPECT_TRUE(app.isRecording());
    EXPECT_FALSE(app.isCapturing());
    app.releaseHold();
    EXPECT_FALSE(app.isRecording());
}

TEST_F(Session, ServiceErrorIsOnlyLogged) {
    app.startStreaming();
    app.socket().fail({54, "Connection reset by peer"});
    app.platform.runUntilIdle();
    EXPECT_EQ(app.platform.log().count("Deepgram error: Connection reset by peer"), 1U);
    EXPECT_TRUE(app.isRecording());
    EXPECT_TRUE(app.isCapturing());
}

TEST_F(Session, FailedCaptureIsLoggedAndTheNextSessionTriesAgain) {
    const auto sessionHears = [this](const std::string& logged) {
        app.platform.log().clear();
        app.startStreaming();
        EXPECT_EQ(app.platform.log().linesWith("AudioCapture: "),
                  logged.empty() ? Lines() : Lines({logged}));
        EXPECT_TRUE(app.isRecording());
        const bool heard = app.speak();
        EXPECT_EQ(app.socket().sentData().size(), heard ? 1U : 0U);
        app.platform.advance(Seconds(10));
        EXPECT_TRUE(app.isRecording());
        app.releaseHold();
        app.platform.advance(Seconds(10));
        EXPECT_EQ(app.platform.log().linesWith("TarvikDictate: audio.stop").size(), 1U);
        return heard;
    };
    app.platform.audio().removeInput();
    EXPECT_FALSE(
        sessionHears("AudioCapture: input has no format (mic permission missing or no device?)"));
    app.platform.audio().setInputFormat({48000, 1});
    app.platform.audio().setStartFailure(Error{16, "device busy"});
    EXPECT_FALSE(sessionHears("AudioCapture: engine.start failed — device busy"));
    app.platform.audio().setStartFailure(std::nullopt);
    EXPECT_TRUE(sessionHears(""));
}

TEST_F(Session, ToggleStartsAndTogglesOff) {
    app.tapToggle();
    EXPECT_TRUE(app.isRecording());
    app.tapToggle();
    EXPECT_FALSE(app.isRecording());
    EXPECT_EQ(app.sessions(), 1U);
}

TEST_F(Session, HoldDuringAToggleSessionStopsItOnRelease) {
    app.tapToggle();
    app.pressHold();
    EXPECT_TRUE(app.isRecording());
    EXPECT_EQ(app.sessions(), 1U);
    app.releaseHold();
    EXPECT_FALSE(app.isRecording());
}

TEST_F(Session, ToggleStopsAHoldSession) {
    app.pressHold();
    app.tapToggle();
    EXPECT_FALSE(app.isRecording());
    app.releaseHold();
    EXPECT_EQ(app.platform.log().linesWith("stopRecording").size(), 1U);
}

TEST_F(Session, EverySessionHasItsOwnNumber) {
    for (int session = 1; session <= 3; ++session) {
        app.pressHold();
        app.releaseHold();
    }
    EXPECT_EQ(app.platform.log().count("TarvikDictate: startRecording (session=3)"), 1U);
    EXPECT_EQ(app.platform.log().count("TarvikDictate: stopRecording (session=3)"), 1U);
}

class SessionWithInputRate : public testing::TestWithParam<std::pair<double, std::string>> {};

TEST_P(SessionWithInputRate, AnnouncesTheRateInWholeHertz) {
    ApplicationUnderTest app;
    app.launch();
    app.platform.audio().setInputFormat({GetParam().first, 1});
    app.pressHold();
    EXPECT_NE(app.socket().request().url.find("&sample_rate=" + GetParam().second + "&"),
              std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    Rates, SessionWithInputRate,
    testing::Values(std::pair(44100.0, "44100"), std::pair(44100.9, "44100"),
                    std::pair(8000.0, "8000"), std::pair(192000.0, "192000"), std::pair(1.0, "1"),
                    std::pair(0.0, "48000"), std::pair(-1.0, "48000"),
                    std::pair(std::numeric_limits<double>::infinity(), "48000"),
                    std::pair(std::numeric_limits<double>::quiet_NaN(), "48000")));

TEST(SessionStates, FollowEachOtherFromIdleToIdle) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    const auto idle = [&] { return !app.isRecording() && !app.isCapturing(); };
    const auto connecting = [&] { return app.isRecording() && !app.isCapturing(); };
    const auto streaming = [&] { return app.isRecording() && app.isCapturing(); };
    const auto stopping = [&] { return !app.isRecording() && app.isCapturing(); };

    EXPECT_TRUE(idle());
    app.pressHold();
    EXPECT_TRUE(connecting());
    app.releaseHold();
    app.platform.advance(Seconds(0.3));
    EXPECT_TRUE(idle());

    app.pressHold();
    app.platform.workspace().wake();
    EXPECT_TRUE(idle());
    app.platform.advance(Seconds(10));

    app.startStreaming();
    EXPECT_TRUE(streaming());
    app.platform.workspace().wake();
    EXPECT_TRUE(idle());
    app.platform.advance(Seconds(10));

    app.startStreaming();
    app.releaseHold();
    EXPECT_TRUE(stopping());
    app.platform.advance(Seconds(0.3));
    EXPECT_TRUE(idle());

    app.startStreaming();
    app.releaseHold();
    app.pressHold();
    EXPECT_TRUE(app.isRecording());
    app.platform.advance(Seconds(0.3));
    EXPECT_TRUE(streaming());
}

}  // namespace
}  // namespace tarvik
