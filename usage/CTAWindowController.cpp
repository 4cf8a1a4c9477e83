#include "usage/CTAWindowController.h"

namespace tarvik {

CTAWindowController::CTAWindowController(platform::Platform& platform)
    : userInterface_(platform.userInterface()) {}

CTAWindowController& CTAWindowController::shared() {
    return platform::Platform::current().shared<CTAWindowController>();
}

void CTAWindowController::show(CTATier tier) {
    userInterface_.showCallToAction(tier == CTATier::tenMinute ? 10 : 60);
}

}  // namespace tarvik
