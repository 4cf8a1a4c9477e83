// SPDX-License-Identifier: MIT

#include "settings/PermissionChecker.h"

#include <string>
#include <utility>

#include "base/Text.h"

namespace tarvik {

void PermissionChecker::requestMicrophone(platform::CaptureAuthorization& authorization,
                                          platform::MainQueue& mainQueue, platform::Log& log,
                                          std::function<void(bool granted)> completion) {
    log.write("TarvikDictate: mic status " +
              std::to_string(authorization.authorizationStatusForAudio()) +
              " (0=notDet,1=restricted,2=denied,3=authorized)");
    authorization.requestAccessForAudio(
        [&mainQueue, &log, completion = std::move(completion)](bool granted) {
            log.write("TarvikDictate: mic requestAccess → " + std::string(trueOrFalse(granted)));
            mainQueue.async([completion, granted] { completion(granted); });
        });
}

bool PermissionChecker::requestAccessibility(platform::Accessibility& accessibility,
                                             platform::Log& log) {
    const bool trusted = accessibility.isProcessTrustedWithOptions(true);
    log.write("TarvikDictate: accessibility trusted → " + std::string(trueOrFalse(trusted)));
    return trusted;
}

}  // namespace tarvik
