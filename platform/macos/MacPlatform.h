// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"
#import "platform/macos/accessibility/AxAccessibility.h"
#import "platform/macos/audio/AvAudioService.h"
#import "platform/macos/audio/CaptureDeviceAuthorization.h"
#import "platform/macos/input/CarbonEventManager.h"
#import "platform/macos/input/QuartzKeyboardEvents.h"
#import "platform/macos/settings/StandardUserDefaults.h"
#import "platform/macos/system/CocoaApplication.h"
#import "platform/macos/system/DispatchMainQueue.h"
#import "platform/macos/system/MacWorkspace.h"
#import "platform/macos/system/MainAppLoginItem.h"
#import "platform/macos/system/MainBundle.h"
#include "platform/macos/system/MonotonicClock.h"
#import "platform/macos/system/ProcessTaskLauncher.h"
#import "platform/macos/system/RunLoopTimerService.h"
#import "platform/macos/system/SystemLog.h"
#import "platform/macos/websocket/UrlWebSocketService.h"
#import "platform/macos/windows/CocoaUserInterface.h"

namespace tarvik::macdesktop {

/// The services of macOS. Made and destroyed on the main thread.
class MacPlatform final : public platform::Platform {
  public:
    MacPlatform();
    /// Releases the application's delegate and the waiting blocks while every service still exists.
    ~MacPlatform() override;

    platform::MainQueue& mainQueue() override { return mainQueue_; }
    platform::TimerService& timers() override { return timers_; }
    platform::Clock& clock() override { return clock_; }
    platform::Log& log() override { return log_; }
    platform::UserDefaults& userDefaults() override { return userDefaults_; }
    platform::Application& application() override { return application_; }
    platform::Bundle& bundle() override { return bundle_; }
    platform::TaskLauncher& taskLauncher() override { return taskLauncher_; }
    platform::Workspace& workspace() override { return workspace_; }
    platform::EventManager& eventManager() override { return eventManager_; }
    platform::AudioService& audio() override { return audio_; }
    platform::CaptureAuthorization& captureAuthorization() override {
        return captureAuthorization_;
    }
    platform::WebSocketService& webSockets() override { return webSockets_; }
    platform::Accessibility& accessibility() override { return accessibility_; }
    platform::KeyboardEvents& keyboardEvents() override { return keyboardEvents_; }
    platform::LoginItemService& loginItem() override { return loginItem_; }
    platform::UserInterface& userInterface() override { return userInterface_; }

  private:
    // In the order of their dependencies: the main queue comes before every service that posts to
    // it.
    SystemLog log_;
    MonotonicClock clock_;
    CocoaApplication application_;
    DispatchMainQueue mainQueue_;
    RunLoopTimerService timers_;
    StandardUserDefaults userDefaults_;
    MainBundle bundle_;
    ProcessTaskLauncher taskLauncher_;
    MainAppLoginItem loginItem_;
    CarbonEventManager eventManager_;
    QuartzKeyboardEvents keyboardEvents_;
    AxAccessibility accessibility_;
    AvAudioService audio_;
    CaptureDeviceAuthorization captureAuthorization_;
    UrlWebSocketService webSockets_;
    MacWorkspace workspace_;
    CocoaUserInterface userInterface_;
};

}  // namespace tarvik::macdesktop
