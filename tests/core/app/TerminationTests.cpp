// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/core/app/ApplicationUnderTest.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

class Termination : public testing::Test {
  protected:
    Termination() { app.launchAndSettle(); }

    void terminate() {
        app.delegate->applicationShouldTerminate([this] { isReady = true; });
    }

    ApplicationUnderTest app;
    bool isReady = false;
};

TEST_F(Termination, WithoutARecordingTheApplicationIsReadyAtOnce) {
    terminate();
    EXPECT_TRUE(isReady);
}

TEST(TerminationBeforeTheLaunch, TheApplicationIsReadyAtOnce) {
    ApplicationUnderTest app;
    bool isReady = false;
    app.delegate->applicationShouldTerminate([&] { isReady = true; });
    EXPECT_TRUE(isReady);
}

TEST_F(Termination, ARecordingEndsAsAtAStop) {
    app.startStreaming();
    app.platform.advance(Seconds(7.5));
    terminate();
    EXPECT_FALSE(app.isRecording());
    EXPECT_EQ(app.recordedSeconds(), 7);
    app.platform.advance(Seconds(0.3));
    EXPECT_FALSE(app.isCapturing());
    EXPECT_EQ(app.socket().sentTexts(), Lines({R"({"type":"CloseStream"})"}));
    EXPECT_FALSE(isReady);
    app.socket().close();
    app.platform.runUntilIdle();
    EXPECT_TRUE(isReady);
}

TEST_F(Termination, ThePiecesThatStillComeAreInsertedFirst) {
    const auto element = app.platform.accessibility().focusNewElement();
    app.startStreaming();
    std::string textWhenReady;
    app.delegate->applicationShouldTerminate([&] { textWhenReady = element->text; });
    app.platform.advance(Seconds(0.5));
    app.socket().deliverText(simulated::transcriptJson("hello", true));
    app.socket().close();
    app.platform.runUntilIdle();
    EXPECT_EQ(textWhenReady, "hello");
}

TEST_F(Termination, AServiceThatNeverClosesIsWaitedForUntilTheCloseDeadline) {
    app.startStreaming();
    terminate();
    app.platform.advance(Seconds(2.29));
    EXPECT_FALSE(isReady);
    app.platform.advance(Seconds(0.02));
    EXPECT_TRUE(isReady);
}

TEST_F(Termination, AConnectionThatNeverOpenedEndsWithTheCapture) {
    app.pressHold();
    terminate();
    app.platform.advance(Seconds(0.31));
    EXPECT_TRUE(isReady);
}

TEST_F(Termination, AConnectionLostLongAgoHoldsNothingUp) {
    app.startStreaming();
    app.socket().fail({1, "lost"});
    app.platform.advance(Seconds(20));
    terminate();
    app.platform.advance(Seconds(2.5));
    EXPECT_TRUE(isReady);
}

TEST_F(Termination, AClientThatWasReleasedBeforeHoldsNothingUp) {
    app.startStreaming();
    app.socket().fail({1, "lost"});
    app.platform.advance(Seconds(20));
    app.releaseHold();
    app.platform.advance(Seconds(5));
    terminate();
    EXPECT_TRUE(isReady);
}

TEST_F(Termination, ARecordingThatHasJustStoppedIsWaitedForAsWell) {
    app.startStreaming();
    app.releaseHold();
    terminate();
    EXPECT_FALSE(isReady);
    app.platform.advance(Seconds(2.31));
    EXPECT_TRUE(isReady);
}

TEST_F(Termination, TheHotkeysDoNothingAfterIt) {
    app.startStreaming();
    terminate();
    EXPECT_EQ(app.platform.eventManager().hotKeys(), 0U);
}

// A wake registers the hotkeys again.
TEST_F(Termination, NoRecordingStartsWhileAStreamIsWaitedFor) {
    app.startStreaming();
    terminate();
    app.delegate->handleSystemWake();
    app.delegate->startRecording();
    EXPECT_FALSE(app.isRecording());
    EXPECT_FALSE(isReady);
}

TEST(DeferredBlock, TheSetupWindowNeedsTheDelegate) {
    ApplicationUnderTest app;
    app.launch();
    app.delegate->applicationWillTerminate();
    app.releaseDelegate();
    app.platform.advance(Seconds(10));
    EXPECT_TRUE(app.setupWindows().empty());
}

TEST(DeferredBlock, TheCallToActionNeedsTheDelegate) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.platform.userDefaults().setInteger(595, "totalDictationSeconds");
    app.pressHold();
    app.platform.advance(Seconds(6));
    app.releaseHold();
    app.delegate->applicationWillTerminate();
    app.releaseDelegate();
    app.platform.advance(Seconds(10));
    EXPECT_FALSE(app.callToAction());
}

}  // namespace
}  // namespace tarvik
