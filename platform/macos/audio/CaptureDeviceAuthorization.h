#pragma once

#include "platform/CaptureAuthorization.h"

namespace tarvik::macdesktop {

/// The permission to capture audio as AVCaptureDevice knows it.
class CaptureDeviceAuthorization final : public platform::CaptureAuthorization {
  public:
    int authorizationStatusForAudio() override;
    void requestAccessForAudio(std::function<void(bool granted)> handler) override;
};

}  // namespace tarvik::macdesktop
