// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/Workspace.h"
#include "platform/linux/gnome/GnomeSession.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/input/HotKeyNotifier.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/loop/PollLoop.h"

namespace tarvik::linuxdesktop {

/// Hotkeys as custom shortcuts and typing by an engine of IBus, of a GNOME session on Wayland.
///
/// Both share one thread, which sleeps until GNOME or the main thread wants something. Main thread
/// only, unless a line says otherwise.
class GnomeInput final : public HotKeyMeans, public TypingMeans {
  public:
    /// Tells which process has the keyboard; empty where unknown. Any thread; does not block.
    using Front = std::function<std::optional<platform::ProcessIdentifier>()>;

    /// Asks the session bus for GNOME Shell, and waits 1 s at the most. A GNOME Shell that answers
    /// later is used from then on. The references outlive the object. Without `front`, text goes to
    /// whichever field has the keyboard.
    GnomeInput(platform::MainQueue& mainQueue, platform::Log& log,
               std::weak_ptr<HotKeyListener> listener, Front front);
    /// Ends the thread, gives the shortcuts back and puts the user's engine back. Text that was
    /// taken before is typed first, as far as its targets take it within 0.8 s. Takes 1 s at the
    /// most.
    ~GnomeInput() override;
    GnomeInput(const GnomeInput&) = delete;
    GnomeInput& operator=(const GnomeInput&) = delete;

    /// Why this session has no GNOME Shell on Wayland; empty while it has one, and while nobody has
    /// answered yet.
    std::optional<std::string> refusal() const;
    /// The same for typing.
    std::optional<std::string> typingRefusal() const;

    bool isAvailable() const override { return isReady_; }

    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                      std::uint32_t modifiers) override;
    void unregisterHotKey(HotKeyNumber number) override;
    /// Nothing is left to do: typing lifts no modifier here.
    void expectLift(std::uint32_t /*modifiers*/) override {}
    bool canTakeOver() const override { return canTakeOver_; }
    void takeOver() override;

    void type(TypedText text, std::function<void()> onDone) override;

  private:
    GnomeSession::Events events(const std::shared_ptr<std::promise<void>>& ready, Front front);
    void refuse(const std::string& reason);
    void finish();

    platform::MainQueue& mainQueue_;
    platform::Log& log_;
    const HotKeyNotifier notifier_;
    PollLoop loop_;
    Deadline endDeadline_{loop_};
    std::atomic<bool> isReady_ = false;
    std::atomic<bool> canTakeOver_ = false;
    mutable std::mutex mutex_;
    // Both under the mutex.
    std::optional<std::string> refusal_;
    std::optional<std::string> typingRefusal_;
    std::unique_ptr<GnomeSession> session_;
    bool hasAnswered_ = false;
    std::thread thread_;
};

}  // namespace tarvik::linuxdesktop
