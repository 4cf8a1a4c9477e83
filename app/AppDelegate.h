#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "audio/AudioCapture.h"
#include "base/AtomicReference.h"
#include "hotkeys/ToggleHotkey.h"
#include "platform/Platform.h"
#include "speech/DeepgramClient.h"

namespace tarvik {

/// The hub of the application: its lifecycle, the one recording that can run at a time, the status
/// item with its menu, and the API key prompt.
///
/// Made once at process start with std::make_shared and alive until the process ends. Main thread
/// only; what it hands to others holds it weakly, but for the chunk callback of a recording and a
/// transcript on its way.
class AppDelegate : public platform::ApplicationDelegate,
                    public std::enable_shared_from_this<AppDelegate> {
  public:
    explicit AppDelegate(platform::Platform& platform);

    void applicationDidFinishLaunching(const platform::LaunchNotification& notification) override;
    bool applicationShouldHandleReopen(bool hasVisibleWindows) override;
    void applicationShouldPerform(platform::ApplicationAction action) override;

    /// Ends the capture and lets it go, so that nothing holds the delegate when the process ends.
    /// No recording can be started or stopped after that.
    void applicationWillTerminate();

    /// The machine has woken: a recording is abandoned, and the hotkeys are registered anew.
    void handleSystemWake();

    /// Fills the menu; called each time before it opens.
    void menuNeedsUpdate();
    void openSetupWindow();
    /// Asks the user for the API key and stores it; comes back once the user has answered.
    void promptForApiKey();
    /// Ends this process; another one starts half a second later.
    void restartApp();

    /// Starts a recording; nothing happens while one runs. Without a stored key the key prompt
    /// follows instead.
    void startRecording();
    /// Ends the recording; nothing happens when none runs. The capture goes on for 0.3 seconds,
    /// unheard, for a recording that follows at once; transcripts that still arrive are inserted.
    void stopRecording();

  private:
    void installMainMenu();
    void setupHotkey();
    void setupStatusItem();
    bool isSetupNeeded() const;
    void decideWelcome(const platform::LaunchNotification& notification);
    void scheduleSetupWindow(Seconds delay);

    void updateStatusIcon(bool recording);
    void rebuildMenu();

    /// What a press of the long-form hotkey does.
    void toggleRecording();
    std::int64_t inputSampleRate();
    void handleConnected(bool isOpen);
    void handleTranscript(const std::string& text, bool isFinal);
    void insertTranscript(const std::string& piece);
    platform::AXUIElementRef currentFocusedAXElement();
    void recordUsage();
    void finishStop(std::int64_t generation, const std::shared_ptr<DeepgramClient>& client);

    void startAutoStopTimer();
    void checkAutoStop();

    std::shared_ptr<platform::StatusItem> statusItem_;
    std::shared_ptr<platform::Menu> menu_;
    std::shared_ptr<ToggleHotkey> toggle_;
    std::shared_ptr<AudioCapture> audio_;
    /// The only field that another thread reads: the audio delivery thread, once per chunk.
    AtomicReference<DeepgramClient> deepgram_;
    bool isRecording_ = false;
    /// All final pieces of the newest recording.
    std::string lastFinalTranscript_;
    std::optional<TimePoint> recordingStartTime_;
    std::shared_ptr<platform::RunningApplication> originatingApp_;
    platform::AXUIElementRef originatingElement_;
    std::optional<TimePoint> lastFinalReceived_;
    std::unique_ptr<platform::Timer> autoStopTimer_;
    /// The number of recordings so far, the only guard against the late half of a stop reaching
    /// into a newer one.
    std::int64_t sessionGeneration_ = 0;

    platform::Platform& platform_;
};

}  // namespace tarvik
