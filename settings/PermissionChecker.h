// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include "platform/Accessibility.h"
#include "platform/CaptureAuthorization.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"

namespace tarvik {

/// Asks the desktop for the two permissions that dictation needs. Main thread only.
class PermissionChecker {
  public:
    PermissionChecker() = delete;

    /// Requests the microphone, even when the answer is known already. Calls `completion` on the
    /// main thread, never inside this call, with whether the permission is granted.
    static void requestMicrophone(platform::CaptureAuthorization& authorization,
                                  platform::MainQueue& mainQueue, platform::Log& log,
                                  std::function<void(bool granted)> completion);

    /// Returns whether the text fields of other programs may be read and written. Makes the desktop
    /// ask for the permission when it is missing.
    static bool requestAccessibility(platform::Accessibility& accessibility, platform::Log& log);
};

}  // namespace tarvik
