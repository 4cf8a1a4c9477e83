// SPDX-License-Identifier: MIT

#import "platform/macos/audio/CaptureDeviceAuthorization.h"

#import <AVFoundation/AVFoundation.h>

namespace tarvik::macdesktop {

int CaptureDeviceAuthorization::authorizationStatusForAudio() {
    return static_cast<int>([AVCaptureDevice authorizationStatusForMediaType:AVMediaTypeAudio]);
}

void CaptureDeviceAuthorization::requestAccessForAudio(std::function<void(bool granted)> handler) {
    [AVCaptureDevice requestAccessForMediaType:AVMediaTypeAudio
                             completionHandler:^(BOOL granted) {
                               handler(granted);
                             }];
}

}  // namespace tarvik::macdesktop
