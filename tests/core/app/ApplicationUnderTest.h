// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/AppDelegate.h"
#include "tests/support/SimulatedPlatform.h"
#include "tests/support/TranscriptJson.h"

namespace tarvik {

/// The settings of a user who has only entered an API key.
inline simulated::UserDefaultsContents storedKey() {
    return {{"deepgramApiKey", std::string("secret")}};
}

inline simulated::UserDefaultsContents nothingStored() {
    return {};
}

/// The application on a simulated desktop, with the actions of a user and of the speech service.
/// Each action runs everything that is due before it returns.
class ApplicationUnderTest {
  public:
    static constexpr std::uint32_t holdHotkey = 1;
    static constexpr std::uint32_t toggleHotkey = 2;
    static constexpr platform::ProcessIdentifier editor = 4711;

    explicit ApplicationUnderTest(simulated::UserDefaultsContents defaults = storedKey())
        : platform(std::move(defaults)), delegate(std::make_shared<AppDelegate>(platform)) {}
    ~ApplicationUnderTest() {
        if (delegate) {
            delegate->applicationWillTerminate();
        }
    }

    void launch(const platform::LaunchNotification& notification = {}) {
        delegate->applicationDidFinishLaunching(notification);
        platform.runUntilIdle();
    }

    /// Launches, closes the setup window that appears, and clears log and journal. Afterwards the
    /// clock shows a whole second.
    void launchAndSettle() {
        launch();
        platform.advance(Seconds(10));
        platform.userInterface().window("Tarvik Dictate")->close();
        platform.log().clear();
        platform.journal().clear();
    }

    /// Releases the process's reference, which must be the last one.
    void releaseDelegate() {
        const std::weak_ptr<AppDelegate> watched = delegate;
        delegate.reset();
        EXPECT_TRUE(watched.expired());
    }

    void pressHold() { key(holdHotkey, true); }
    void releaseHold() { key(holdHotkey, false); }
    void tapToggle() {
        key(toggleHotkey, true);
        key(toggleHotkey, false);
    }

    /// The latest connection.
    simulated::SimulatedWebSocketTask& socket() { return platform.webSockets().lastTask(); }
    void acceptConnection() {
        socket().open();
        platform.runUntilIdle();
    }
    void sayFinal(const std::string& text) { say(text, true); }
    void sayInterim(const std::string& text) { say(text, false); }

    /// Presses the hold hotkey and accepts the connection.
    void startStreaming() {
        pressHold();
        acceptConnection();
    }
    /// Delivers a buffer of one sample; false when no engine captures.
    bool speak(float sample = 0.5F) { return platform.audio().deliver({{sample}}); }

    /// The times at which the setup window was shown.
    std::vector<TimePoint> setupWindows() {
        return platform.userInterface().frontTimes("Tarvik Dictate");
    }
    /// The call-to-action window, which has no title; empty before the first call to action.
    std::shared_ptr<simulated::SimulatedWindow> callToAction() {
        return platform.userInterface().window("");
    }

    bool isCapturing() { return platform.audio().lastEngine()->isRunning(); }
    /// Whether the icon shows a recording.
    bool isRecording() {
        const auto& button = platform.userInterface().statusButton();
        return button.image && button.image->name == "mic.fill" &&
               button.tint == platform::SystemColor::red;
    }
    /// The number of started recordings, by the log.
    std::size_t sessions() {
        return platform.log().linesWith("TarvikDictate: startRecording (session=").size();
    }
    std::int64_t recordedSeconds() {
        return platform.userDefaults().integerForKey("totalDictationSeconds");
    }
    std::vector<std::string> logLines() { return platform.log().lines(); }

    simulated::SimulatedPlatform platform;
    std::shared_ptr<AppDelegate> delegate;

  private:
    void key(std::uint32_t hotkey, bool isDown) {
        if (isDown) {
            platform.eventManager().press(hotkey);
        } else {
            platform.eventManager().release(hotkey);
        }
        platform.runUntilIdle();
    }
    void say(const std::string& text, bool isFinal) {
        socket().deliverText(simulated::transcriptJson(text, isFinal));
        platform.runUntilIdle();
    }
};

}  // namespace tarvik
