#include "settings/SetupWindowController.h"

namespace tarvik {

SetupWindowController::SetupWindowController(platform::Platform& platform)
    : userInterface_(platform.userInterface()) {}

SetupWindowController& SetupWindowController::shared() {
    return platform::Platform::current().shared<SetupWindowController>();
}

void SetupWindowController::show() {
    userInterface_.showSetupWindow();
}

}  // namespace tarvik
