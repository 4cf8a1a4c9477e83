// SPDX-License-Identifier: MIT

#include "app/AppDelegate.h"

#include <utility>

#include "base/Required.h"
#include "base/Text.h"
#include "base/Weakly.h"
#include "settings/BundleVersion.h"
#include "settings/KeychainStore.h"
#include "settings/LoginItem.h"
#include "settings/PermissionChecker.h"
#include "settings/Relaunch.h"
#include "settings/SetupWindowController.h"

namespace tarvik {

namespace {

constexpr std::string_view welcomeVersionKey = "lastWelcomeShownForVersion";
/// Long enough for the permission prompts of a first launch to appear before the window.
constexpr Seconds welcomeDelay{4.0};
constexpr Seconds ordinaryLaunchDelay{0.4};
/// A little longer than the delay of a stop and the close deadline together.
constexpr Seconds terminationTimeout{2.5};
/// In seconds, in the format of the shell's sleep command.
constexpr auto restartDelay = "0.5";

}  // namespace

AppDelegate::AppDelegate(platform::Platform& platform) : platform_(platform) {}

void AppDelegate::applicationDidFinishLaunching(const platform::LaunchNotification& notification) {
    installMainMenu();
    setupHotkey();
    setupStatusItem();
    audio_ = std::make_shared<AudioCapture>(platform_.audio(), platform_.log());
    PermissionChecker::requestMicrophone(platform_.captureAuthorization(), platform_.mainQueue(),
                                         platform_.log(), [&log = platform_.log()](bool granted) {
                                             log.write("TarvikDictate: launch-time mic request → " +
                                                       std::string(trueOrFalse(granted)));
                                         });
    PermissionChecker::requestAccessibility(platform_.accessibility(), platform_.log());
    decideWelcome(notification);
    LoginItem::enableOnFirstRun(platform_.loginItem(), platform_.userDefaults(), platform_.log());
    platform_.workspace().observeDidWake(weakly(*this, &AppDelegate::handleSystemWake));
}

bool AppDelegate::isSetupNeeded() const {
    return !KeychainStore::shared().apiKey() ||
           platform_.captureAuthorization().authorizationStatusForAudio() !=
               static_cast<int>(platform::AuthorizationStatus::authorized) ||
           !platform_.accessibility().isProcessTrusted();
}

// An ordinary launch shows the window too, because the window tells the user that the application
// runs.
void AppDelegate::decideWelcome(const platform::LaunchNotification& notification) {
    const bool needsSetup = isSetupNeeded();
    const std::string version = versionText(platform_.bundle());
    const bool isNewVersion = platform_.userDefaults().stringForKey(welcomeVersionKey) != version;
    if (needsSetup || isNewVersion) {
        platform_.userDefaults().setString(version, welcomeVersionKey);
        scheduleSetupWindow(welcomeDelay);
    } else if (notification.isDefaultLaunch.value_or(true)) {
        scheduleSetupWindow(ordinaryLaunchDelay);
    }
}

void AppDelegate::scheduleSetupWindow(Seconds delay) {
    platform_.mainQueue().asyncAfter(
        delay, weakly(*this, [](AppDelegate&) { SetupWindowController::shared().show(); }));
}

bool AppDelegate::applicationShouldHandleReopen(bool /*hasVisibleWindows*/) {
    SetupWindowController::shared().show();
    return true;
}

void AppDelegate::applicationShouldPerform(platform::ApplicationAction action) {
    switch (action) {
        case platform::ApplicationAction::toggle:
            toggleRecording();
            break;
        case platform::ApplicationAction::press:
            startRecording();
            break;
        case platform::ApplicationAction::release:
            stopRecording();
            break;
        case platform::ApplicationAction::setup:
            openSetupWindow();
            break;
        case platform::ApplicationAction::keyPrompt:
            promptForApiKey();
            break;
    }
}

void AppDelegate::applicationShouldTerminate(std::function<void()> onReady) {
    if (toggle_) {
        toggle_->stop();
    }
    stopRecording();
    if (!hasEndingStreams()) {
        onReady();
        return;
    }
    onReadyToTerminate_ = std::move(onReady);
    platform_.mainQueue().asyncAfter(terminationTimeout,
                                     weakly(*this, &AppDelegate::replyToTermination));
}

void AppDelegate::replyToTermination() {
    if (const auto onReady = std::exchange(onReadyToTerminate_, nullptr)) {
        onReady();
    }
}

void AppDelegate::applicationWillTerminate() {
    if (audio_) {
        audio_->stop();
    }
    // A capture that failed to start still holds its callback, and the callback holds the delegate.
    audio_.reset();
}

void AppDelegate::handleSystemWake() {
    platform_.log().write("TarvikDictate: system woke — resetting subsystems");
    if (isRecording_) {
        isRecording_ = false;
        updateStatusIcon(false);
        required(audio_).stop();
        // The client stays in the field until it has finished, because late transcripts still
        // belong to the user. The completion then empties the field, whichever client the field
        // holds.
        if (const std::shared_ptr<DeepgramClient> client = deepgram_.load()) {
            client->finish(weakly(*this, [](AppDelegate& self) { self.deepgram_.store(nullptr); }));
        }
    }
    required(toggle_).stop();
    toggle_->start();
}

void AppDelegate::restartApp() {
    relaunch(platform_, restartDelay);
}

}  // namespace tarvik
