// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "platform/Platform.h"
#include "tests/support/Journal.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SimulatedAccessibility.h"
#include "tests/support/SimulatedApplication.h"
#include "tests/support/SimulatedAudio.h"
#include "tests/support/SimulatedBundle.h"
#include "tests/support/SimulatedCaptureAuthorization.h"
#include "tests/support/SimulatedEventManager.h"
#include "tests/support/SimulatedKeyboard.h"
#include "tests/support/SimulatedLoginItem.h"
#include "tests/support/SimulatedTaskLauncher.h"
#include "tests/support/SimulatedTime.h"
#include "tests/support/SimulatedUserDefaults.h"
#include "tests/support/SimulatedUserInterface.h"
#include "tests/support/SimulatedWebSockets.h"
#include "tests/support/SimulatedWorkspace.h"

namespace tarvik::simulated {

/// A whole desktop in memory, in virtual time.
///
/// Initially everything is granted: a microphone at 48 kHz, trusted accessibility, a login item
/// that can be registered. No process is in front, no element has the focus, and no key is stored.
class SimulatedPlatform final : public platform::Platform {
  public:
    /// `defaults` are the settings that an earlier run has stored.
    explicit SimulatedPlatform(UserDefaultsContents defaults = {});
    ~SimulatedPlatform() override;

    SimulatedTime& mainQueue() override { return time_; }
    SimulatedTime& timers() override { return time_; }
    SimulatedTime& clock() override { return time_; }
    tests::RecordingLog& log() override { return log_; }
    SimulatedUserDefaults& userDefaults() override { return userDefaults_; }
    SimulatedApplication& application() override { return application_; }
    SimulatedBundle& bundle() override { return bundle_; }
    SimulatedTaskLauncher& taskLauncher() override { return taskLauncher_; }
    SimulatedWorkspace& workspace() override { return workspace_; }
    SimulatedEventManager& eventManager() override { return eventManager_; }
    SimulatedAudio& audio() override { return audio_; }
    SimulatedCaptureAuthorization& captureAuthorization() override { return captureAuthorization_; }
    SimulatedWebSockets& webSockets() override { return webSockets_; }
    SimulatedAccessibility& accessibility() override { return accessibility_; }
    SimulatedKeyboard& keyboardEvents() override { return keyboard_; }
    SimulatedLoginItem& loginItem() override { return loginItem_; }
    SimulatedUserInterface& userInterface() override { return userInterface_; }

    SimulatedTime& time() { return time_; }
    /// The calls of all services, in order.
    Journal& journal() { return journal_; }

    TimePoint now() const { return time_.now(); }
    void runUntilIdle() { time_.runUntilIdle(); }
    void advance(Seconds interval) { time_.advance(interval); }

  private:
    Journal journal_;
    SimulatedTime time_;
    tests::RecordingLog log_{&journal_};
    SimulatedUserDefaults userDefaults_;
    SimulatedApplication application_{time_, journal_};
    SimulatedBundle bundle_;
    SimulatedTaskLauncher taskLauncher_{journal_};
    SimulatedWorkspace workspace_{journal_};
    SimulatedEventManager eventManager_{journal_};
    SimulatedAudio audio_{time_, journal_};
    SimulatedCaptureAuthorization captureAuthorization_{journal_};
    SimulatedWebSockets webSockets_{time_, journal_};
    SimulatedAccessibility accessibility_{journal_};
    SimulatedKeyboard keyboard_{journal_};
    SimulatedLoginItem loginItem_{journal_};
    SimulatedUserInterface userInterface_{time_, journal_};
};

}  // namespace tarvik::simulated
