// SPDX-License-Identifier: MIT

#import <AVFoundation/AVFoundation.h>

#include <cstdlib>

#import "platform/macos/audio/AvAudioService.h"
#import "platform/macos/audio/CaptureDeviceAuthorization.h"
#import "platform/macos/system/DispatchMainQueue.h"
#include "platform/macos/system/MonotonicClock.h"
#include "tests/conformance/audio/AudioWorld.h"
#import "tests/macos/MainRunLoop.h"

namespace tarvik::tests {

namespace {

/// The audio of macOS with the machine's own hardware, and without the permission to capture.
class MacAudioWorld final : public AudioWorld {
  public:
    platform::AudioService& service() override { return service_; }
    platform::CaptureAuthorization& authorization() override { return authorization_; }

    bool runUntil(const std::function<bool()>& condition,
                  std::chrono::milliseconds timeout) override {
        return runMainLoopUntil(condition, timeout);
    }

    bool isWithoutMicrophone() override {
        return [AVCaptureDevice defaultDeviceWithMediaType:AVMediaTypeAudio] == nil;
    }

    // The suite that would need these is left out: a microphone wants a permission, and no program
    // connects one.
    void plug(std::uint32_t, std::uint32_t) override { std::abort(); }
    void unplug() override { std::abort(); }
    void speak(const std::vector<std::int16_t>&) override { std::abort(); }
    void suspend(bool) override { std::abort(); }
    void killServer() override { std::abort(); }
    void restartServer(std::uint32_t) override { std::abort(); }

  private:
    macdesktop::MonotonicClock clock_;
    macdesktop::DispatchMainQueue mainQueue_{clock_};
    macdesktop::AvAudioService service_{mainQueue_};
    macdesktop::CaptureDeviceAuthorization authorization_;
};

}  // namespace

AudioWorldMaker realAudioWorld() {
    return {"Real", [] { return std::make_unique<MacAudioWorld>(); }};
}

}  // namespace tarvik::tests
