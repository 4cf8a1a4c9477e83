// SPDX-License-Identifier: MIT

#include "settings/SetupWindowController.h"

#include <optional>
#include <string>

#include "base/Text.h"
#include "base/Weakly.h"
#include "settings/KeychainStore.h"
#include "settings/LoginItem.h"
#include "settings/PermissionChecker.h"
#include "settings/Relaunch.h"
#include "settings/SettingsURLs.h"
#include "settings/StatusText.h"

namespace tarvik {

namespace {

constexpr Seconds refreshInterval{1.0};
/// The distance between the window and the edges of the screen, in points.
constexpr double screenMargin = 20;

PermissionStatus permissionStatus(int authorizationStatus) {
    switch (static_cast<platform::AuthorizationStatus>(authorizationStatus)) {
        case platform::AuthorizationStatus::authorized:
            return PermissionStatus::granted;
        case platform::AuthorizationStatus::restricted:
        case platform::AuthorizationStatus::denied:
            return PermissionStatus::denied;
        case platform::AuthorizationStatus::notDetermined:
            break;
    }
    return PermissionStatus::notDetermined;
}

}  // namespace

SetupWindowController::SetupWindowController(platform::Platform& platform)
    : platform_(platform), userInterface_(platform.userInterface()) {
    window_ = userInterface_.makeWindow(
        {.contentSize = {990, 635},
         .minimumSize = platform::Size{830, 555},
         .styleMask = platform::titledWindow | platform::closableWindow |
                      platform::miniaturizableWindow | platform::resizableWindow,
         .title = "Tarvik Dictate",
         .level = platform::WindowLevel::floating,
         .hidesOnDeactivate = false,
         .collectionBehavior = platform::canJoinAllSpaces | platform::fullScreenAuxiliary,
         .willClose = [this] { windowWillClose(); }});
    window_->setContent(buildContent(), std::nullopt);
}

SetupWindowController& SetupWindowController::shared() {
    return platform::Platform::current().shared<SetupWindowController>();
}

void SetupWindowController::show() {
    positionTopRight();
    platform_.application().activate();
    window_->show();
    window_->orderFrontRegardless();
    refresh();
    refreshTimer_.reset();
    refreshTimer_ = platform_.timers().scheduledRepeatingTimer(
        refreshInterval, weakly(*this, &SetupWindowController::refresh));
}

void SetupWindowController::positionTopRight() {
    const std::optional<platform::Rect> visible = userInterface_.mainScreenVisibleFrame();
    if (!visible) {
        return;
    }
    const platform::Size size = window_->frame().size;
    window_->setFrameOrigin(
        {visible->origin.x + visible->size.width - size.width - screenMargin,
         visible->origin.y + visible->size.height - size.height - screenMargin});
}

void SetupWindowController::refresh() {
    const bool hasKey = KeychainStore::shared().apiKey().has_value();
    showStatus(*keyStatus_, hasKey, hasKey ? "Saved" : "Not set");
    micRow_->apply(permissionStatus(platform_.captureAuthorization().authorizationStatusForAudio()),
                   "Granted", "Not granted");
    accessRow_->apply(platform_.accessibility().isProcessTrusted() ? PermissionStatus::granted
                                                                   : PermissionStatus::denied,
                      "Granted", "Not granted");
    loginItemCheckbox_->setOn(isLoginItemEnabled());
}

bool SetupWindowController::isLoginItemEnabled() {
    return platform_.loginItem().status() == platform::LoginItemStatus::enabled;
}

void SetupWindowController::saveApiKey() {
    // An empty field clears the key on purpose.
    KeychainStore::shared().setApiKey(trimmed(keyField_->text()));
    refresh();
}

void SetupWindowController::grantMic() {
    const int status = platform_.captureAuthorization().authorizationStatusForAudio();
    if (permissionStatus(status) == PermissionStatus::notDetermined) {
        PermissionChecker::requestMicrophone(
            platform_.captureAuthorization(), platform_.mainQueue(), platform_.log(),
            weakly(*this, [](SetupWindowController& self, bool) { self.refresh(); }));
    } else {
        // The workspace logs a failure, and there is nothing else to try.
        static_cast<void>(platform_.workspace().openUrl(std::string(SettingsURLs::microphone)));
    }
}

// The file manager shows the application, so that a user can drag it into a list without it.
void SetupWindowController::grantAccess() {
    PermissionChecker::requestAccessibility(platform_.accessibility(), platform_.log());
    platform_.workspace().activateFileViewerSelecting(platform_.bundle().bundlePath());
    // As above: the workspace logs a failure.
    static_cast<void>(platform_.workspace().openUrl(std::string(SettingsURLs::accessibility)));
}

void SetupWindowController::toggleLoginItem(platform::Checkbox& checkbox) {
    if (!LoginItem::setEnabled(checkbox.isOn(), platform_.loginItem(), platform_.log())) {
        checkbox.setOn(isLoginItemEnabled());
    }
}

void SetupWindowController::restartApp() {
    relaunch(platform_, "0.6");
}

void SetupWindowController::windowWillClose() {
    refreshTimer_.reset();
}

}  // namespace tarvik
