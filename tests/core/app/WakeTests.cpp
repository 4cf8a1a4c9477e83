// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/core/app/ApplicationUnderTest.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

Lines reRegistration() {
    return {"log TarvikDictate: system woke — resetting subsystems",
            "unregisterEventHotKey 1",
            "unregisterEventHotKey 2",
            "removeEventHandler",
            "installEventHandler",
            "registerEventHotKey 49 2048 TaDi 1 0",
            "log TarvikDictate: hold-to-talk registered (⌥ Space)",
            "registerEventHotKey 49 2560 TaDi 2 0",
            "log TarvikDictate: tap-to-toggle registered (⌥ ⇧ Space)"};
}

TEST(Wake, WhileIdleOnlyRegistersTheHotkeysAgain) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.platform.workspace().wake();
    app.platform.runUntilIdle();
    EXPECT_EQ(app.platform.journal().lines(), reRegistration());
    EXPECT_EQ(app.platform.eventManager().hotKeys(), 2U);
    EXPECT_EQ(app.platform.eventManager().handlers(), 1U);
    app.pressHold();
    EXPECT_TRUE(app.isRecording());
}

TEST(Wake, AbandonsARecordingBeforeItRegistersTheHotkeysAgain) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.startStreaming();
    app.platform.journal().clear();
    app.platform.workspace().wake();
    Lines expected = reRegistration();
    const Lines abandoning = {"setImage mic", "setContentTintColor none", "audio removeTap 0",
                              "audio stop", R"(send {"type":"CloseStream"})"};
    expected.insert(expected.begin() + 1, abandoning.begin(), abandoning.end());
    EXPECT_EQ(app.platform.journal().lines(), expected);
    EXPECT_FALSE(app.isRecording());
    EXPECT_FALSE(app.isCapturing());
}

TEST(Wake, RecordsNoUsageAndWritesNoStopLine) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.startStreaming();
    app.platform.advance(Seconds(20));
    app.platform.workspace().wake();
    app.platform.advance(Seconds(60));
    EXPECT_EQ(app.recordedSeconds(), 0);
    EXPECT_TRUE(app.platform.log().linesWith("stopRecording").empty());
    EXPECT_TRUE(app.platform.log().linesWith("audio.stop").empty());
    EXPECT_TRUE(app.platform.log().linesWith("auto-stop").empty());
}

TEST(Wake, SendsTheCloseMessageAndNoAudioAfterIt) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.startStreaming();
    app.platform.workspace().wake();
    EXPECT_FALSE(app.speak());
    EXPECT_EQ(app.socket().sentTexts(), Lines({R"({"type":"CloseStream"})"}));
    EXPECT_TRUE(app.socket().sentData().empty());
}

TEST(Wake, InsertsLatePiecesOfTheAbandonedRecording) {
    ApplicationUnderTest app;
    const auto element = app.platform.accessibility().focusNewElement();
    app.launchAndSettle();
    app.startStreaming();
    app.sayFinal("hello");
    app.platform.workspace().wake();
    app.sayFinal("world");
    EXPECT_EQ(element->text, "hello world");
}

TEST(Wake, WhileConnectingReleasesTheClientAtOnce) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.pressHold();
    app.platform.workspace().wake();
    EXPECT_FALSE(app.isRecording());
    // The late connection still starts the capture, but there is no client for the chunks.
    app.acceptConnection();
    EXPECT_TRUE(app.isCapturing());
    EXPECT_TRUE(app.speak());
    EXPECT_TRUE(app.socket().sentData().empty());
    EXPECT_TRUE(app.socket().sentTexts().empty());
}

TEST(Wake, TimerEndsAtItsNextTickWithoutASecondStop) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.startStreaming();
    app.platform.advance(Seconds(1));
    app.platform.workspace().wake();
    EXPECT_EQ(app.platform.time().runningTimers(), 1U);
    app.platform.advance(Seconds(4));
    EXPECT_EQ(app.platform.time().runningTimers(), 0U);
    app.platform.advance(Seconds(700));
    EXPECT_TRUE(app.platform.log().linesWith("auto-stop").empty());
    EXPECT_TRUE(app.platform.log().linesWith("stopRecording").empty());
}

TEST(Wake, JustBeforeALimitLogsNoAutoStop) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.startStreaming();
    app.platform.advance(Seconds(29));
    app.platform.workspace().wake();
    app.platform.advance(Seconds(2));
    EXPECT_EQ(app.platform.time().runningTimers(), 0U);
    EXPECT_TRUE(app.platform.log().linesWith("auto-stop").empty());
}

TEST(Wake, OldFinishReleasesTheClientOfANewRecording) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.startStreaming();
    app.platform.workspace().wake();
    app.platform.advance(Seconds(1));
    app.startStreaming();
    EXPECT_TRUE(app.speak());
    EXPECT_EQ(app.socket().sentData().size(), 1U);
    // The old client's finish completes two seconds after the wake.
    app.platform.advance(Seconds(1));
    EXPECT_TRUE(app.isRecording());
    EXPECT_TRUE(app.speak());
    EXPECT_EQ(app.socket().sentData().size(), 1U);
    app.releaseHold();
    app.platform.advance(Seconds(10));
    EXPECT_FALSE(app.isCapturing());
    EXPECT_TRUE(app.socket().sentTexts().empty());
}

TEST(Wake, FinishIsOverAsSoonAsTheServiceCloses) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.startStreaming();
    app.platform.workspace().wake();
    app.platform.advance(Seconds(0.5));
    app.socket().close();
    app.platform.runUntilIdle();
    app.startStreaming();
    app.platform.advance(Seconds(1.5));
    EXPECT_TRUE(app.speak());
    EXPECT_EQ(app.socket().sentData().size(), 1U);
}

TEST(Wake, WhileStoppingKeepsTheDeferredStop) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.startStreaming();
    app.releaseHold();
    app.platform.workspace().wake();
    EXPECT_TRUE(app.isCapturing());
    app.platform.advance(Seconds(0.3));
    EXPECT_FALSE(app.isCapturing());
    EXPECT_EQ(app.platform.log().count("TarvikDictate: audio.stop (session=1)"), 1U);
}

}  // namespace
}  // namespace tarvik
