// SPDX-License-Identifier: MIT

#include "app/AppDelegate.h"
#include "base/Text.h"
#include "settings/KeychainStore.h"
#include "settings/SetupWindowController.h"

namespace tarvik {

void AppDelegate::openSetupWindow() {
    SetupWindowController::shared().show();
}

void AppDelegate::promptForApiKey() {
    platform::Alert alert;
    alert.messageText = "Deepgram API Key";
    alert.informativeText = "Paste your Deepgram API key. It will be stored in the macOS Keychain.";
    alert.fieldText = KeychainStore::shared().apiKey().value_or("");
    alert.fieldPlaceholder = "Deepgram API key";
    alert.fieldWidth = 360;
    alert.fieldHeight = 24;
    alert.buttons = {"Save", "Cancel"};

    platform_.application().activateIgnoringOtherApps();
    const platform::AlertAnswer answer = platform_.userInterface().runModal(alert);
    if (answer.code == platform::alertFirstButtonReturn) {
        // An empty field clears the key on purpose.
        KeychainStore::shared().setApiKey(trimmed(answer.fieldText));
    }
}

}  // namespace tarvik
