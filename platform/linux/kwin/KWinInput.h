// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/input/FrontMeans.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/input/HotKeyNotifier.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/kwin/KWinSession.h"
#include "platform/linux/loop/PollLoop.h"

namespace tarvik::linuxdesktop {

/// Hotkeys as global shortcuts of KDE, typing as KWin's input method, and the window in front, of
/// one KWin session on Wayland.
///
/// The three share one thread, which sleeps until KWin or the main thread wants something. Main
/// thread only, unless a line says otherwise.
class KWinInput final : public HotKeyMeans, public TypingMeans, public FrontMeans {
  public:
    /// Asks the session bus for KWin, and KWin for what it offers, for which it waits 1 s at the
    /// most each. What KWin answers later is used from then on. The references outlive the object.
    KWinInput(platform::MainQueue& mainQueue, platform::Log& log,
              std::weak_ptr<HotKeyListener> listener);
    /// Ends the thread, gives the input method back and deletes the shortcuts. Text that was taken
    /// before is typed first, as far as its targets take it within 0.8 s. Takes 1.3 s at the most.
    ~KWinInput() override;
    KWinInput(const KWinInput&) = delete;
    KWinInput& operator=(const KWinInput&) = delete;

    /// Why this session has no KWin with shortcuts; empty while it has one.
    std::optional<std::string> refusal() const;
    /// The same for the window in front, and for typing, which needs to know the window. Empty also
    /// while KWin has not answered yet.
    std::optional<std::string> frontRefusal() const;

    bool isAvailable() const override { return isConnected_; }

    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                      std::uint32_t modifiers) override;
    void unregisterHotKey(HotKeyNumber number) override;
    /// Nothing is left to do: no means that types in the session lifts a modifier.
    void expectLift(std::uint32_t /*modifiers*/) override {}
    bool canTakeOver() const override { return canTakeOver_; }
    void takeOver() override;

    void type(TypedText text, std::function<void()> onDone) override;

    std::optional<platform::ProcessIdentifier> frontmostProcess() const override;
    std::optional<platform::ProcessIdentifier> chooseTarget() override;

  private:
    // The answer to a registration. Settled once: by KWin, or by a caller who waits no more.
    struct Answer {
        std::atomic<bool> isSettled = false;
        std::promise<platform::OSStatus> status;
    };

    void run();
    KWinSession::Events events(const std::shared_ptr<std::promise<void>>& ready);
    void finish();
    void settle(Answer& answer, HotKeyNumber number, platform::OSStatus status);

    platform::MainQueue& mainQueue_;
    platform::Log& log_;
    const HotKeyNotifier notifier_;
    PollLoop loop_;
    Deadline endDeadline_{loop_};
    std::atomic<bool> isConnected_ = false;
    std::atomic<bool> canTakeOver_ = false;
    // Of the last chooseTarget(). Main thread only.
    WindowFocus::Window target_;
    mutable std::mutex mutex_;
    // All under the mutex.
    WindowFocus::Window front_;
    std::optional<std::string> refusal_;
    std::optional<std::string> frontRefusal_;
    std::unique_ptr<KWinSession> session_;
    std::thread thread_;
};

}  // namespace tarvik::linuxdesktop
