// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace tarvik::platform {

/// Whether the application may use a microphone. The values are AVFoundation's. A system may report
/// further values, so the service returns plain numbers.
enum class AuthorizationStatus { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

/// The permission to capture audio.
class CaptureAuthorization {
  public:
    virtual ~CaptureAuthorization() = default;

    /// The current AuthorizationStatus, as a number. Returns the state known so far, without
    /// waiting. Main thread.
    virtual int authorizationStatusForAudio() = 0;

    /// Asks the user where the system needs an answer. Calls `handler` once, on any thread, with
    /// whether the permission is granted. Main thread; returns without waiting.
    virtual void requestAccessForAudio(std::function<void(bool granted)> handler) = 0;
};

}  // namespace tarvik::platform
