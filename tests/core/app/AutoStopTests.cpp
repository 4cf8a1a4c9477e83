// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/core/app/ApplicationUnderTest.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

class AutoStop : public testing::Test {
  protected:
    AutoStop() { app.launchAndSettle(); }

    /// Delivers a final piece every `interval` until `length` has passed.
    void talk(Seconds length, Seconds interval) {
        for (Seconds spoken{0}; spoken < length; spoken += interval) {
            app.platform.advance(interval);
            app.sayFinal("still here");
        }
    }
    Lines autoStops() { return app.platform.log().linesWith("auto-stop"); }

    ApplicationUnderTest app;
};

TEST_F(AutoStop, SilentSessionIsStoppedAtTheSixthTick) {
    app.startStreaming();
    app.platform.advance(Seconds(29.9));
    EXPECT_TRUE(app.isRecording());
    app.platform.advance(Seconds(0.1));
    EXPECT_FALSE(app.isRecording());
    EXPECT_EQ(autoStops(), Lines({"TarvikDictate: auto-stop (silence 30s > threshold 30s)"}));
}

TEST_F(AutoStop, IsAnOrdinaryStop) {
    app.startStreaming();
    app.platform.advance(Seconds(30));
    EXPECT_EQ(app.recordedSeconds(), 30);
    EXPECT_EQ(app.platform.time().runningTimers(), 0U);
    EXPECT_EQ(app.platform.log().count("TarvikDictate: stopRecording (session=1)"), 1U);
    app.platform.advance(Seconds(0.3));
    EXPECT_EQ(app.platform.log().count("TarvikDictate: audio.stop (session=1)"), 1U);
    EXPECT_EQ(app.socket().sentTexts().size(), 1U);
    app.releaseHold();
    EXPECT_EQ(app.platform.log().linesWith("stopRecording").size(), 1U);
}

TEST_F(AutoStop, ConnectionThatNeverOpenedIsEndedBySilence) {
    app.pressHold();
    app.platform.advance(Seconds(30));
    EXPECT_FALSE(app.isRecording());
    EXPECT_EQ(autoStops().size(), 1U);
}

TEST_F(AutoStop, ExactlyThirtySecondsOfSilenceDoNotStop) {
    app.platform.time().setLateness(Seconds(0));
    app.startStreaming();
    app.platform.advance(Seconds(30));
    EXPECT_TRUE(app.isRecording());
    app.platform.advance(Seconds(5));
    EXPECT_FALSE(app.isRecording());
    EXPECT_EQ(autoStops(), Lines({"TarvikDictate: auto-stop (silence 35s > threshold 30s)"}));
}

TEST_F(AutoStop, ExactlyTenMinutesDoNotStop) {
    app.platform.time().setLateness(Seconds(0));
    app.startStreaming();
    talk(Seconds(600), Seconds(20));
    EXPECT_TRUE(app.isRecording());
    app.platform.advance(Seconds(5));
    EXPECT_FALSE(app.isRecording());
    EXPECT_EQ(autoStops(), Lines({"TarvikDictate: auto-stop (10-min hard cap reached, "
                                  "elapsed=605s)"}));
}

TEST_F(AutoStop, SessionWithSpeechIsStoppedAfterTenMinutes) {
    app.startStreaming();
    const TimePoint start = app.platform.now();
    talk(Seconds(580), Seconds(20));
    app.platform.advance(Seconds(19.9));
    EXPECT_TRUE(app.isRecording());
    app.platform.advance(Seconds(0.1));
    EXPECT_FALSE(app.isRecording());
    EXPECT_NEAR(Seconds(app.platform.now() - start).count(), 600, 0.01);
    EXPECT_EQ(autoStops(), Lines({"TarvikDictate: auto-stop (10-min hard cap reached, "
                                  "elapsed=600s)"}));
    EXPECT_EQ(app.recordedSeconds(), 600);
}

TEST_F(AutoStop, OnlyFinalPiecesRestartTheSilence) {
    app.startStreaming();
    app.platform.advance(Seconds(3));
    app.sayFinal("hello");
    app.platform.advance(Seconds(27));
    EXPECT_TRUE(app.isRecording());
    app.sayInterim("hel");
    app.platform.advance(Seconds(5));
    EXPECT_EQ(autoStops(), Lines({"TarvikDictate: auto-stop (silence 32s > threshold 30s)"}));
}

TEST_F(AutoStop, HardCapIsLoggedWhenBothLimitsArePassed) {
    app.startStreaming();
    talk(Seconds(560), Seconds(20));
    app.platform.advance(Seconds(9));
    app.sayFinal("last words");
    app.platform.advance(Seconds(31));
    EXPECT_EQ(autoStops(), Lines({"TarvikDictate: auto-stop (10-min hard cap reached, "
                                  "elapsed=600s)"}));
}

TEST_F(AutoStop, AppliesToAToggleSessionToo) {
    app.tapToggle();
    app.acceptConnection();
    app.platform.advance(Seconds(30));
    EXPECT_FALSE(app.isRecording());
    app.tapToggle();
    app.acceptConnection();
    talk(Seconds(580), Seconds(20));
    app.platform.advance(Seconds(20));
    EXPECT_FALSE(app.isRecording());
    EXPECT_EQ(autoStops().size(), 2U);
}

TEST_F(AutoStop, ThereIsNeverMoreThanOneTimer) {
    app.pressHold();
    app.releaseHold();
    EXPECT_EQ(app.platform.time().runningTimers(), 0U);
    app.pressHold();
    app.platform.workspace().wake();
    EXPECT_EQ(app.platform.time().runningTimers(), 1U);
    app.platform.advance(Seconds(3));
    app.pressHold();
    EXPECT_EQ(app.platform.time().runningTimers(), 1U);
    // The timer of the new session ticks from its own start. The seventh tick of the old timer
    // would measure 32 s.
    app.platform.advance(Seconds(60));
    EXPECT_EQ(autoStops(), Lines({"TarvikDictate: auto-stop (silence 30s > threshold 30s)"}));
}

TEST_F(AutoStop, SilenceIsMeasuredCorrectlyAfterMissedTicks) {
    app.startStreaming();
    app.platform.advance(Seconds(1));
    app.platform.time().stall(Seconds(41));
    app.platform.runUntilIdle();
    EXPECT_EQ(autoStops(), Lines({"TarvikDictate: auto-stop (silence 42s > threshold 30s)"}));
}

TEST_F(AutoStop, StopsASessionOnlyOnce) {
    app.startStreaming();
    app.platform.advance(Seconds(700));
    EXPECT_EQ(autoStops().size(), 1U);
    EXPECT_EQ(app.recordedSeconds(), 30);
}

}  // namespace
}  // namespace tarvik
