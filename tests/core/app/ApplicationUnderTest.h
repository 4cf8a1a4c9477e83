#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/AppDelegate.h"
#include "tests/support/SimulatedPlatform.h"
#include "tests/support/TranscriptJson.h"

namespace tarvik {

/// What a user has stored who only ever entered a key.
inline simulated::UserDefaultsContents storedKey() {
    return {{"deepgramApiKey", std::string("secret")}};
}

inline simulated::UserDefaultsContents nothingStored() {
    return {};
}

/// The application on a simulated desktop, with the hands of a user and of the speech service. Its
/// operations run what is due before they return.
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

    /// Launches, closes the setup window once it has come up, and forgets what was recorded so far.
    /// The clock stands at a whole second then.
    void launchAndSettle() {
        launch();
        platform.advance(Seconds(10));
        platform.userInterface().window("Tarvik Dictate")->close();
        platform.log().clear();
        platform.journal().clear();
    }

    /// The process's own reference goes; nobody else may have one.
    void giveUpDelegate() {
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

    /// The connection that was requested last.
    simulated::SimulatedWebSocketTask& socket() { return platform.webSockets().lastTask(); }
    void acceptConnection() {
        socket().open();
        platform.runUntilIdle();
    }
    void sayFinal(const std::string& text) { say(text, true); }
    void sayInterim(const std::string& text) { say(text, false); }

    /// Presses the hold hotkey and has the connection accepted.
    void startStreaming() {
        pressHold();
        acceptConnection();
    }
    /// Speaks one buffer of one sample; false when nobody captures.
    bool speak(float sample = 0.5F) { return platform.audio().deliver({{sample}}); }

    /// When the setup window came up.
    std::vector<TimePoint> setupWindows() {
        return platform.userInterface().frontTimes("Tarvik Dictate");
    }
    /// The call-to-action window, which has no title; empty while none was ever due.
    std::shared_ptr<simulated::SimulatedWindow> callToAction() {
        return platform.userInterface().window("");
    }

    bool isCapturing() { return platform.audio().lastEngine()->isRunning(); }
    /// As the icon shows it.
    bool isRecording() {
        const auto& button = platform.userInterface().statusButton();
        return button.image && button.image->name == "mic.fill" &&
               button.tint == platform::SystemColor::red;
    }
    /// The recordings that the log says have begun.
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
