// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audio/AudioCapture.h"
#include "base/AtomicReference.h"
#include "hotkeys/ToggleHotkey.h"
#include "platform/Platform.h"
#include "speech/DeepgramClient.h"

namespace tarvik {

/// The hub of the application: its lifecycle, the one recording that can run at a time, the status
/// item with its menu, and the API key prompt.
///
/// Made once at process start with std::make_shared, and alive until the process ends. Main thread
/// only. Callbacks hold the delegate weakly, with two exceptions: the chunk callback of a
/// recording, and a transcript that waits on the main queue.
class AppDelegate : public platform::ApplicationDelegate,
                    public std::enable_shared_from_this<AppDelegate> {
  public:
    explicit AppDelegate(platform::Platform& platform);

    void applicationDidFinishLaunching(const platform::LaunchNotification& notification) override;
    bool applicationShouldHandleReopen(bool hasVisibleWindows) override;
    void applicationShouldPerform(platform::ApplicationAction action) override;
    /// Stops a running recording and unregisters the hotkeys. Calls `onReady` when every stream has
    /// ended and its transcripts are inserted: at once without a stream, otherwise within 2.5 s.
    void applicationShouldTerminate(std::function<void()> onReady) override;

    /// Ends and releases the capture, so that nothing holds the delegate when the process ends. No
    /// recording can be started or stopped after this call.
    void applicationWillTerminate();

    /// Called when the machine has woken from sleep. Ends a running recording and registers the
    /// hotkeys again.
    void handleSystemWake();

    /// Fills the menu. Called each time before the menu opens.
    void menuNeedsUpdate();
    void openSetupWindow();
    /// Asks the user for the API key and stores the key. Returns when the user has answered.
    void promptForApiKey();
    /// Ends this process. A new process of the application starts half a second later.
    void restartApp();

    /// Starts a recording. Does nothing while a recording runs, and while the application waits for
    /// its end. Without a stored API key the key prompt appears instead.
    void startRecording();
    /// Ends the recording. Does nothing when no recording runs. Transcripts that arrive later are
    /// still inserted. The capture runs on for 0.3 s without sending audio, so that a recording
    /// that follows at once finds the engine running.
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

    /// Starts a recording, or ends the running one. Called when the long-form hotkey goes down.
    void toggleRecording();
    std::int64_t inputSampleRate();
    void handleConnected(bool isOpen);
    void handleTranscript(const std::string& text, bool isFinal);
    void insertTranscript(const std::string& piece);
    platform::AXUIElementRef currentFocusedAXElement();
    void recordUsage();
    void finishStop(std::int64_t generation, const std::shared_ptr<DeepgramClient>& client);
    void handleStreamEnd(const DeepgramClient* client);
    bool hasEndingStreams();
    void replyToTermination();

    void startAutoStopTimer();
    void checkAutoStop();

    std::shared_ptr<platform::StatusItem> statusItem_;
    std::shared_ptr<platform::Menu> menu_;
    std::shared_ptr<ToggleHotkey> toggle_;
    std::shared_ptr<AudioCapture> audio_;
    /// The client that gets the audio. The only field that another thread reads: the audio delivery
    /// thread loads it once per chunk.
    AtomicReference<DeepgramClient> deepgram_;
    bool isRecording_ = false;
    /// All final pieces of the newest recording, joined.
    std::string lastFinalTranscript_;
    std::optional<TimePoint> recordingStartTime_;
    std::shared_ptr<platform::RunningApplication> originatingApp_;
    platform::AXUIElementRef originatingElement_;
    std::optional<TimePoint> lastFinalReceived_;
    std::unique_ptr<platform::Timer> autoStopTimer_;
    /// The number of recordings so far. The deferred part of a stop compares this number, so that
    /// the stop of an old recording never ends the capture of a newer one.
    std::int64_t sessionGeneration_ = 0;
    /// The clients of stopped recordings whose streams have not ended. A session may release the
    /// client of a lost connection before the stream's end is reported.
    std::vector<std::weak_ptr<DeepgramClient>> endingClients_;
    /// Called when no ending client is left; empty until the application is about to end.
    std::function<void()> onReadyToTerminate_;

    platform::Platform& platform_;
};

}  // namespace tarvik
