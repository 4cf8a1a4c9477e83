// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "base/Result.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/input/HotKeyNotifier.h"
#include "platform/linux/input/InputSession.h"
#include "platform/linux/input/RegistrationAnswer.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/loop/Reconnection.h"

namespace tarvik::linuxdesktop {

/// The thread of one desktop's input: runs its sessions, one after the other, and carries what the
/// main thread wants to them. The thread sleeps until the desktop or the main thread wants
/// something.
///
/// A session that is lost ends: its hold ends, and its texts are reported lost. The next session
/// begins when the desktop is there again. The loss is one line in the log, and so is the return.
///
/// A hotkey is wanted from its registration to unregisterHotKey(), whatever the desktop answers.
/// Each session is asked for all wanted hotkeys when the session is ready. A session that says that
/// a combination was freed is asked again for the refused ones.
///
/// Main thread only, unless a line says otherwise.
class InputThread {
  public:
    /// Connects to the desktop. Called by the constructor, and later on the loop's thread. An error
    /// when nobody listens. `loop` outlives the session.
    using Open = std::function<Result<std::unique_ptr<InputSession>>(
        EventLoop& loop, const InputSession::Events& events)>;

    /// What is special about one desktop.
    struct Desktop {
        /// For the log and for refusals.
        std::string noThreadText;
        std::string noAnswerText;
        std::string returnText;
        std::string noTypistText;
        /// The socket that appears when the desktop is there again; empty when it has no file.
        std::filesystem::path socket;
        /// The limit for the shutdown, with the 0.8 s for the texts that are left.
        std::chrono::milliseconds shutdownTimeout;
        Open open;
    };

    /// Begins the first session, and waits 1 s at the most for its answer. A desktop that answers
    /// later is used from then on. A desktop that refuses gets no thread. The references outlive
    /// the object. `listener` may be empty.
    InputThread(platform::MainQueue& mainQueue, platform::Log& log,
                std::weak_ptr<HotKeyListener> listener, Desktop desktop);
    /// Types the texts that were taken before, as far as their targets take them within 0.8 s.
    /// Gives back what the session has of the desktop, and ends the thread. No callback comes
    /// afterwards.
    ~InputThread();
    InputThread(const InputThread&) = delete;
    InputThread& operator=(const InputThread&) = delete;

    /// Why the desktop does not serve; empty while it does, and while it has not answered yet.
    std::optional<std::string> refusal() const;
    /// The same for typing.
    std::optional<std::string> typingRefusal() const;
    /// Whether a session has been answered and is not lost. Any thread.
    bool isConnected() const { return isConnected_; }

    /// As HotKeyMeans. A desktop that is too busy to answer decides later.
    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                      std::uint32_t modifiers);
    void unregisterHotKey(HotKeyNumber number);
    /// As TypingMeans. `window` is as in SessionTypist.
    void type(TypedText text, std::int64_t window, std::function<void()> onDone);

    /// Calls `action` on the loop's thread with the session, unless there is none. `action` does
    /// not end the session. Any thread.
    void post(std::function<void(InputSession&)> action);

  private:
    // What the application believes of a hotkey. It believes noErr while no desktop has decided.
    enum class State { undecided, registered, refused };
    struct HotKey {
        std::uint32_t keyCode = 0;
        std::uint32_t modifiers = 0;
        State state = State::undecided;
        // The session has been asked, and has not answered.
        bool isAsked = false;
        // Why the desktop refuses, as the log has it.
        std::string reason = {};
        // Null once a desktop has decided.
        std::shared_ptr<RegistrationAnswer> answer = nullptr;
    };

    void awaitAnswer();
    // The operations from here on are for the loop's thread, which is the main thread until the
    // first answer.
    void run();
    std::optional<Error> open();
    InputSession::Events events();
    void handleReady(const std::string& typingRefusal);
    void handleRefusal(const std::string& reason);
    void handleLoss(const std::string& reason);
    void answerFirst(std::optional<std::string> refusal);
    void want(HotKeyNumber number, HotKey hotKey);
    void request(HotKeyNumber number);
    void requestAll();
    void requestRefused();
    void handleStatus(HotKeyNumber number, platform::OSStatus status, const std::string& reason);
    std::string refusalText(platform::OSStatus status) const;
    void refuseAwaited();
    void shutDown();
    void endSession();

    platform::MainQueue& mainQueue_;
    platform::Log& log_;
    const HotKeyNotifier notifier_;
    const Desktop desktop_;
    PollLoop loop_;
    Reconnection reconnection_;
    Deadline typingDeadline_{loop_};
    Deadline shutdownDeadline_{loop_};
    std::atomic<bool> isConnected_ = false;
    mutable std::mutex mutex_;
    // Both under the mutex.
    std::optional<std::string> refusal_;
    std::optional<std::string> typingRefusal_;
    // From here on for the loop's thread.
    std::unique_ptr<InputSession> session_;
    bool isAwaitingAnswer_ = false;
    bool hasAnswered_ = false;
    bool isLost_ = false;
    bool isShuttingDown_ = false;
    bool isEndingSession_ = false;
    // Every hotkey that is wanted.
    std::map<HotKeyNumber, HotKey> hotKeys_;
    std::thread thread_;
};

}  // namespace tarvik::linuxdesktop
