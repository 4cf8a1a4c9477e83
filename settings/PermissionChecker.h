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

    /// Asks for the microphone, also when the answer is known already, and calls `completion` later
    /// on the main thread with whether it may be used.
    static void requestMicrophone(platform::CaptureAuthorization& authorization,
                                  platform::MainQueue& mainQueue, platform::Log& log,
                                  std::function<void(bool granted)> completion);

    /// Whether other programs' text fields may be read and written; the desktop is made to ask for
    /// it when not.
    static bool requestAccessibility(platform::Accessibility& accessibility, platform::Log& log);
};

}  // namespace tarvik
