// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "app/RunApplication.h"
#include "tests/core/app/ApplicationUnderTest.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

constexpr auto welcomeKey = "lastWelcomeShownForVersion";
constexpr int authorized = 3;

/// The settings after an earlier launch of this version, with the login item registered.
simulated::UserDefaultsContents settled() {
    simulated::UserDefaultsContents defaults = storedKey();
    defaults[welcomeKey] = std::string("0.1.0");
    defaults["loginItemAutoConfigured"] = true;
    return defaults;
}

/// The times at which the setup window was shown, in seconds after `launch`.
std::vector<double> setupWindowsAfter(ApplicationUnderTest& app, TimePoint launch) {
    std::vector<double> times;
    for (const TimePoint time : app.setupWindows()) {
        times.push_back(Seconds(time - launch).count());
    }
    return times;
}

/// Launches and lets a minute pass. Returns the seconds until the setup window was shown; −1 when
/// it was not shown.
double setupWindowDelay(ApplicationUnderTest& app,
                        const platform::LaunchNotification& notification = {}) {
    const TimePoint launch = app.platform.now();
    app.launch(notification);
    app.platform.advance(Seconds(60));
    const std::vector<double> times = setupWindowsAfter(app, launch);
    EXPECT_LE(times.size(), 1U);
    return times.empty() ? -1 : times.front();
}

constexpr double justAfter = 0.001;

TEST(Construction, DoesNothingYet) {
    ApplicationUnderTest app;
    EXPECT_EQ(app.platform.journal().lines(), Lines());
}

TEST(Process, RunsAsAnAccessoryUntilQuitAndReleasesTheCapture) {
    simulated::SimulatedPlatform platform(settled());
    platform.time().asyncAfter(Seconds(10), [&] {
        EXPECT_TRUE(platform.audio().lastEngine()->isAlive());
        EXPECT_TRUE(platform.userInterface().statusItem()->menu->choose("Quit"));
    });
    EXPECT_EQ(runApplication(platform), 0);
    Lines lines = platform.journal().lines();
    ASSERT_GT(lines.size(), 4U);
    lines.resize(4);
    EXPECT_EQ(lines, Lines({"setDelegate", "setActivationPolicy 1", "run", "installMainMenu"}));
    EXPECT_EQ(platform.journal().count("installMainMenu"), 1U);
    EXPECT_EQ(platform.journal().lines().back(), "terminate");
    EXPECT_FALSE(platform.audio().lastEngine()->isAlive());
}

TEST(Launch, TakesItsStepsInOrder) {
    simulated::UserDefaultsContents defaults = storedKey();
    ApplicationUnderTest app(defaults);
    app.delegate->applicationDidFinishLaunching({});
    EXPECT_EQ(app.platform.journal().lines(),
              Lines({"installMainMenu",
                     "installEventHandler",
                     "registerEventHotKey 49 2048 TaDi 1 0",
                     "log TarvikDictate: hold-to-talk registered (⌥ Space)",
                     "registerEventHotKey 49 2560 TaDi 2 0",
                     "log TarvikDictate: tap-to-toggle registered (⌥ ⇧ Space)",
                     "makeStatusItem",
                     "setImage mic",
                     "setContentTintColor none",
                     "makeMenu",
                     "makeEngine",
                     "observeConfigurationChange",
                     "authorizationStatusForAudio",
                     "log TarvikDictate: mic status 3 "
                     "(0=notDet,1=restricted,2=denied,3=authorized)",
                     "requestAccessForAudio",
                     "log TarvikDictate: mic requestAccess → true",
                     "isProcessTrustedWithOptions true",
                     "log TarvikDictate: accessibility trusted → true",
                     "authorizationStatusForAudio",
                     "isProcessTrusted",
                     "registerItem",
                     "log TarvikDictate: registered as login item (first run)",
                     "observeDidWake"}));
}

TEST(Launch, LogsTheMicrophonePermissionWhenItIsAnswered) {
    ApplicationUnderTest app;
    app.launch();
    EXPECT_EQ(app.platform.log().count("TarvikDictate: launch-time mic request → true"), 1U);
}

TEST(Launch, DoesNotWaitForTheMicrophonePermission) {
    ApplicationUnderTest app;
    app.platform.captureAuthorization().isAnswerHeld = true;
    app.launch();
    EXPECT_EQ(app.platform.workspace().wakeObservers(), 1U);
    EXPECT_TRUE(app.platform.log().linesWith("launch-time mic request").empty());
    app.platform.captureAuthorization().answer(false);
    app.platform.runUntilIdle();
    EXPECT_EQ(app.platform.log().count("TarvikDictate: launch-time mic request → false"), 1U);
}

TEST(Launch, MakesTheCaptureOnceAndStartsNothing) {
    ApplicationUnderTest app;
    app.launch();
    EXPECT_EQ(app.platform.audio().engines().size(), 1U);
    EXPECT_EQ(app.platform.audio().lastEngine()->calls(), Lines());
    EXPECT_TRUE(app.platform.webSockets().sessions().empty());
    EXPECT_EQ(app.platform.time().runningTimers(), 0U);
}

TEST(Welcome, FirstLaunchWithoutAKeyShowsTheSetupWindowAfterFourSeconds) {
    ApplicationUnderTest app(nothingStored());
    app.delegate->applicationDidFinishLaunching({});
    EXPECT_EQ(app.platform.userDefaults().stringForKey(welcomeKey), "0.1.0");
    app.platform.advance(Seconds(3.99));
    EXPECT_TRUE(app.setupWindows().empty());
    app.platform.advance(Seconds(0.01));
    EXPECT_EQ(app.setupWindows().size(), 1U);
}

TEST(Welcome, LaterLaunchByTheUserShowsTheSetupWindowAfterFourTenthsOfASecond) {
    ApplicationUnderTest app(settled());
    EXPECT_NEAR(setupWindowDelay(app, {true}), 0.4, justAfter);
}

TEST(Welcome, LaunchWithoutTheFlagCountsAsADefaultLaunch) {
    ApplicationUnderTest app(settled());
    EXPECT_NEAR(setupWindowDelay(app, {std::nullopt}), 0.4, justAfter);
}

TEST(Welcome, NonDefaultLaunchShowsNothing) {
    ApplicationUnderTest app(settled());
    EXPECT_EQ(setupWindowDelay(app, {false}), -1);
}

TEST(Welcome, NeededSetupIsShownAtANonDefaultLaunchToo) {
    simulated::UserDefaultsContents defaults = settled();
    defaults.erase("deepgramApiKey");
    ApplicationUnderTest app(defaults);
    EXPECT_NEAR(setupWindowDelay(app, {false}), 4.0, justAfter);
}

TEST(Welcome, AnEmptyStoredKeyNeedsSetup) {
    simulated::UserDefaultsContents defaults = settled();
    defaults["deepgramApiKey"] = std::string();
    ApplicationUnderTest app(defaults);
    EXPECT_NEAR(setupWindowDelay(app), 4.0, justAfter);
}

TEST(Welcome, WithoutTrustSetupIsNeeded) {
    ApplicationUnderTest app(settled());
    app.platform.accessibility().isTrusted = false;
    EXPECT_NEAR(setupWindowDelay(app), 4.0, justAfter);
}

class WelcomeWithMicrophoneStatus : public testing::TestWithParam<int> {};

TEST_P(WelcomeWithMicrophoneStatus, NeedsSetupUnlessItIsAuthorized) {
    ApplicationUnderTest app(settled());
    app.platform.captureAuthorization().status = GetParam();
    EXPECT_NEAR(setupWindowDelay(app), GetParam() == authorized ? 0.4 : 4.0, justAfter);
}

INSTANTIATE_TEST_SUITE_P(All, WelcomeWithMicrophoneStatus, testing::Values(0, 1, 2, 3, 4, -1));

TEST(Welcome, ChecksStopAtTheMissingKey) {
    ApplicationUnderTest app(nothingStored());
    app.platform.accessibility().isTrusted = false;
    app.launch();
    EXPECT_EQ(app.platform.journal().count("authorizationStatusForAudio"), 1U);
    EXPECT_EQ(app.platform.journal().count("isProcessTrusted"), 0U);
}

TEST(Welcome, ChecksStopAtTheMicrophoneThatIsNotAuthorized) {
    ApplicationUnderTest app;
    app.platform.captureAuthorization().status = 0;
    app.launch();
    EXPECT_EQ(app.platform.journal().count("authorizationStatusForAudio"), 2U);
    EXPECT_EQ(app.platform.journal().count("isProcessTrusted"), 0U);
}

TEST(Welcome, AfterAnUpdateTheSetupWindowComesAfterFourSecondsOncePerVersion) {
    simulated::UserDefaultsContents leftBehind;
    {
        ApplicationUnderTest updated(settled());
        updated.platform.bundle().setVersion("0.2.0");
        EXPECT_NEAR(setupWindowDelay(updated, {false}), 4.0, justAfter);
        leftBehind = updated.platform.userDefaults().contents();
    }
    ApplicationUnderTest again(leftBehind);
    again.platform.bundle().setVersion("0.2.0");
    EXPECT_NEAR(setupWindowDelay(again), 0.4, justAfter);
}

TEST(Welcome, BundleWithoutAVersionIsStoredAndComparedAsAQuestionMark) {
    simulated::UserDefaultsContents leftBehind;
    {
        ApplicationUnderTest first(settled());
        first.platform.bundle().removeVersion();
        EXPECT_NEAR(setupWindowDelay(first), 4.0, justAfter);
        leftBehind = first.platform.userDefaults().contents();
        EXPECT_EQ(std::get<std::string>(leftBehind.at(welcomeKey)), "?");
    }
    ApplicationUnderTest second(leftBehind);
    second.platform.bundle().removeVersion();
    EXPECT_NEAR(setupWindowDelay(second), 0.4, justAfter);
}

TEST(Welcome, VersionThatIsNotTextCountsAsAQuestionMark) {
    ApplicationUnderTest app;
    app.platform.bundle().setVersionThatIsNotText();
    app.launch();
    EXPECT_EQ(app.platform.userDefaults().stringForKey(welcomeKey), "?");
}

TEST(Welcome, StoredVersionOfAnotherTypeCountsAsANewVersion) {
    simulated::UserDefaultsContents defaults = settled();
    defaults[welcomeKey] = std::int64_t{1};
    ApplicationUnderTest app(defaults);
    EXPECT_NEAR(setupWindowDelay(app), 4.0, justAfter);
}

TEST(Welcome, OrdinaryLaunchStoresNothing) {
    ApplicationUnderTest app(settled());
    app.launch();
    EXPECT_EQ(app.platform.userDefaults().writes(), 0);
}

TEST(Reopening, ShowsTheSetupWindowWhateverWindowsAreVisible) {
    for (const bool hasVisibleWindows : {false, true}) {
        ApplicationUnderTest app(settled());
        app.launch({false});
        app.platform.application().setDelegate(app.delegate);
        EXPECT_TRUE(app.platform.application().reopen(hasVisibleWindows));
        EXPECT_EQ(app.setupWindows().size(), 1U);
    }
}

TEST(Shortcuts, ToggleARecordingAndOpenTheSetupWindowAndTheKeyPrompt) {
    ApplicationUnderTest app(settled());
    app.launch({false});
    app.platform.application().setDelegate(app.delegate);
    app.platform.application().perform(platform::ApplicationAction::toggle);
    EXPECT_TRUE(app.isRecording());
    app.platform.application().perform(platform::ApplicationAction::toggle);
    EXPECT_FALSE(app.isRecording());
    EXPECT_TRUE(app.setupWindows().empty());
    app.platform.application().perform(platform::ApplicationAction::setup);
    EXPECT_EQ(app.setupWindows().size(), 1U);
    EXPECT_FALSE(app.isRecording());
    EXPECT_TRUE(app.platform.userInterface().alerts.empty());
    app.platform.application().perform(platform::ApplicationAction::keyPrompt);
    EXPECT_EQ(app.platform.userInterface().alerts.size(), 1U);
}

TEST(Shortcuts, PressAndReleaseAreAHoldThatCountsOnce) {
    using platform::ApplicationAction;
    ApplicationUnderTest app(settled());
    app.launch({false});
    app.platform.application().setDelegate(app.delegate);
    app.platform.application().perform(ApplicationAction::release);
    EXPECT_FALSE(app.isRecording());
    app.platform.application().perform(ApplicationAction::press);
    // A desktop that repeats the command of a held key.
    app.platform.application().perform(ApplicationAction::press);
    EXPECT_TRUE(app.isRecording());
    EXPECT_EQ(app.platform.log().linesWith("startRecording").size(), 1U);
    app.platform.application().perform(ApplicationAction::release);
    EXPECT_FALSE(app.isRecording());
}

TEST(Restart, EndsAtOnceAndStartsTheNextInstanceHalfASecondLater) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    EXPECT_TRUE(app.platform.userInterface().statusItem()->menu->choose("Restart Tarvik Dictate"));
    ASSERT_EQ(app.platform.taskLauncher().launches.size(), 1U);
    EXPECT_EQ(app.platform.taskLauncher().launches[0].launchPath, "/bin/sh");
    EXPECT_EQ(app.platform.taskLauncher().launches[0].arguments,
              Lines({"-c", "sleep 0.5 && /usr/bin/open -n \"/Applications/Tarvik Dictate.app\""}));
    EXPECT_EQ(app.platform.journal().lines(), Lines({"launch /bin/sh", "terminate"}));
}

TEST(Restart, EndsTheApplicationSilentlyWhenTheNextInstanceCannotBeLaunched) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.platform.taskLauncher().failure = Error{2, "No such file or directory"};
    app.delegate->restartApp();
    EXPECT_TRUE(app.platform.application().isTerminated());
    EXPECT_EQ(app.logLines(), Lines());
}

TEST(Delegate, AfterItsEndWaitingBlocksDoNothing) {
    ApplicationUnderTest app;
    app.launch();
    app.pressHold();
    app.platform.eventManager().release(ApplicationUnderTest::holdHotkey);
    app.delegate.reset();
    app.platform.log().clear();
    app.socket().open();
    app.socket().deliverText(simulated::transcriptJson("hello", true));
    app.platform.workspace().wake();
    app.platform.advance(Seconds(700));
    EXPECT_EQ(app.logLines(), Lines());
    EXPECT_TRUE(app.platform.keyboardEvents().posts.empty());
    EXPECT_FALSE(app.isCapturing());
}

TEST(Delegate, AfterItsEndTheDeferredStopDoesNothing) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.pressHold();
    app.releaseHold();
    app.releaseDelegate();
    app.platform.advance(Seconds(10));
    EXPECT_TRUE(app.platform.log().linesWith("audio.stop").empty());
}

TEST(Delegate, AfterItsEndAWaitingKeyPromptDoesNotAppear) {
    ApplicationUnderTest app(nothingStored());
    app.launchAndSettle();
    app.delegate->startRecording();
    app.releaseDelegate();
    app.platform.advance(Seconds(10));
    EXPECT_TRUE(app.platform.userInterface().alerts.empty());
}

TEST(Delegate, AfterItsEndTheFinishOfAnAbandonedRecordingDoesNothing) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.startStreaming();
    app.platform.workspace().wake();
    app.releaseDelegate();
    EXPECT_TRUE(app.socket().cancels().empty());
    app.platform.advance(Seconds(2));
    EXPECT_EQ(app.socket().cancels().size(), 1U);
}

TEST(Delegate, AtItsEndTheRunningCaptureIsStopped) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    app.startStreaming();
    app.platform.journal().clear();
    app.delegate->applicationWillTerminate();
    EXPECT_EQ(app.platform.journal().lines(), Lines({"audio removeTap 0", "audio stop"}));
}

class DelegateAtTheEnd : public testing::TestWithParam<void (*)(ApplicationUnderTest&)> {};

TEST_P(DelegateAtTheEnd, IsHeldByNothing) {
    ApplicationUnderTest app;
    app.launchAndSettle();
    GetParam()(app);
    app.delegate->applicationWillTerminate();
    app.releaseDelegate();
}

INSTANTIATE_TEST_SUITE_P(
    States, DelegateAtTheEnd,
    testing::Values([](ApplicationUnderTest&) {},
                    [](ApplicationUnderTest& app) { app.startStreaming(); },
                    [](ApplicationUnderTest& app) {
                        app.platform.audio().removeInput();
                        app.startStreaming();
                    },
                    [](ApplicationUnderTest& app) {
                        app.platform.audio().setStartFailure(Error{16, "device busy"});
                        app.startStreaming();
                    },
                    [](ApplicationUnderTest& app) {
                        app.startStreaming();
                        app.platform.audio().removeInput();
                        app.platform.audio().changeConfiguration();
                        app.platform.runUntilIdle();
                    }));

TEST(DelegateDeathTest, WakeOrStartBeforeTheLaunchStopsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ApplicationUnderTest app;
    EXPECT_DEATH(app.delegate->handleSystemWake(), "");
    EXPECT_DEATH(app.delegate->startRecording(), "");
}

}  // namespace
}  // namespace tarvik
