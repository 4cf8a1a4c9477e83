// SPDX-License-Identifier: MIT
#pragma once

#include "platform/CaptureAuthorization.h"

namespace tarvik::macdesktop {

/// The permission to capture audio, by AVCaptureDevice.
class CaptureDeviceAuthorization final : public platform::CaptureAuthorization {
  public:
    int authorizationStatusForAudio() override;
    void requestAccessForAudio(std::function<void(bool granted)> handler) override;
};

}  // namespace tarvik::macdesktop
