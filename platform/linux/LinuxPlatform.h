// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>

#include "platform/Platform.h"
#include "platform/linux/DesktopInput.h"
#include "platform/linux/accessibility/AccessibilityWorker.h"
#include "platform/linux/accessibility/AtspiAccessibility.h"
#include "platform/linux/audio/PulseAudioService.h"
#include "platform/linux/loop/MonotonicClock.h"
#include "platform/linux/settings/FileUserDefaults.h"
#include "platform/linux/system/ApplicationObject.h"
#include "platform/linux/system/DisplayLoss.h"
#include "platform/linux/system/InstanceClaim.h"
#include "platform/linux/system/LinuxBundle.h"
#include "platform/linux/system/LinuxWorkspace.h"
#include "platform/linux/system/ProcessTaskLauncher.h"
#include "platform/linux/system/QtApplication.h"
#include "platform/linux/system/QtMainQueue.h"
#include "platform/linux/system/QtTimerService.h"
#include "platform/linux/system/SystemLog.h"
#include "platform/linux/system/XdgLoginItem.h"
#include "platform/linux/websocket/BeastWebSocketService.h"
#include "platform/linux/windows/QtUserInterface.h"

namespace tarvik::linuxdesktop {

/// The services of a Linux desktop. Made and destroyed on the main thread.
class LinuxPlatform final : public platform::Platform {
  public:
    /// The arguments are those of main and outlive the object. `claim` is that of the process which
    /// may run.
    LinuxPlatform(int& argumentCount, char** arguments, InstanceClaim claim);
    /// Releases the application's delegate and the blocks that wait, while the services still live.
    ~LinuxPlatform() override;

    platform::MainQueue& mainQueue() override { return mainQueue_; }
    platform::TimerService& timers() override { return timers_; }
    platform::Clock& clock() override { return clock_; }
    platform::Log& log() override { return log_; }
    platform::UserDefaults& userDefaults() override { return userDefaults_; }
    platform::Application& application() override { return application_; }
    platform::Bundle& bundle() override { return bundle_; }
    platform::TaskLauncher& taskLauncher() override { return taskLauncher_; }
    platform::Workspace& workspace() override { return workspace_; }
    platform::EventManager& eventManager() override { return input_.eventManager(); }
    platform::AudioService& audio() override { return audio_; }
    platform::CaptureAuthorization& captureAuthorization() override { return audio_; }
    platform::WebSocketService& webSockets() override { return webSockets_; }
    platform::Accessibility& accessibility() override { return accessibility_; }
    platform::KeyboardEvents& keyboardEvents() override { return input_.keyboardEvents(); }
    platform::LoginItemService& loginItem() override { return loginItem_; }
    platform::UserInterface& userInterface() override { return userInterface_; }

  private:
    void serve(InstanceClaim claim);
    void endWithoutDisplay();
    WebSocketOptions webSocketOptions();

    // In the order in which they need each other. The log stands first, so that every other service
    // can report until its end; the main queue stands before everything that posts to it.
    SystemLog log_;
    MonotonicClock clock_;
    QtApplication application_;
    QtMainQueue mainQueue_;
    QtTimerService timers_;
    FileUserDefaults userDefaults_;
    LinuxBundle bundle_;
    ProcessTaskLauncher taskLauncher_;
    XdgLoginItem loginItem_;
    std::shared_ptr<AccessibilityWorker> accessibilityWorker_;
    DesktopInput input_;
    AtspiAccessibility accessibility_;
    PulseAudioService audio_;
    BeastWebSocketService webSockets_;
    LinuxWorkspace workspace_;
    QtUserInterface userInterface_;
    std::optional<ApplicationObject> applicationObject_;
    DisplayLoss displayLoss_{[this] { endWithoutDisplay(); }};
};

}  // namespace tarvik::linuxdesktop
