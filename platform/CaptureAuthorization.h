#pragma once

#include <functional>

namespace tarvik::platform {

/// Whether the application may use a microphone; the values are AVFoundation's. A system may report
/// others as well, which is why the service answers plain numbers.
enum class AuthorizationStatus { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

/// The permission to capture audio.
class CaptureAuthorization {
  public:
    virtual ~CaptureAuthorization() = default;

    /// An AuthorizationStatus, as a number. Main thread; answered from what is known, without
    /// waiting.
    virtual int authorizationStatusForAudio() = 0;

    /// Asks the user where that is needed, and calls `handler`, on any thread, once, with whether
    /// the permission is there. Main thread; does not wait.
    virtual void requestAccessForAudio(std::function<void(bool granted)> handler) = 0;
};

}  // namespace tarvik::platform
