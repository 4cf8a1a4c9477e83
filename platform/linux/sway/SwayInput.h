// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <future>
#include <map>
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
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/loop/Reconnection.h"
#include "platform/linux/sway/SwaySession.h"
#include "platform/linux/wayland/WindowFocus.h"

namespace tarvik::linuxdesktop {

/// Hotkeys as bindings of Sway, typing through a virtual keyboard, and the window in front, of one
/// Sway session.
///
/// The three share one thread, which sleeps until Sway or the main thread wants something. Main
/// thread only, unless a line says otherwise.
class SwayInput final : public HotKeyMeans, public TypingMeans, public FrontMeans {
  public:
    /// Connects to the Sway that SWAYSOCK names, for which it waits 1 s at the most. A Sway that
    /// answers later is used from then on. A Sway that ends a connection is connected to again,
    /// and gets the hotkeys that were registered. The references outlive the object.
    SwayInput(platform::MainQueue& mainQueue, platform::Log& log,
              std::weak_ptr<HotKeyListener> listener);
    /// Ends the thread and removes the bindings. Text that was taken before is typed first, as far
    /// as its targets take it within 0.8 s. Takes 1 s at the most.
    ~SwayInput() override;
    SwayInput(const SwayInput&) = delete;
    SwayInput& operator=(const SwayInput&) = delete;

    /// Why this session has no Sway; empty while it has one, and while Sway has not answered yet.
    std::optional<std::string> refusal() const;
    /// The same for typing.
    std::optional<std::string> typingRefusal() const;

    bool isAvailable() const override { return isConnected_; }

    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                      std::uint32_t modifiers) override;
    void unregisterHotKey(HotKeyNumber number) override;
    /// Nothing is left to do: typing lifts no modifier here, and no other means types in the
    /// session.
    void expectLift(std::uint32_t /*modifiers*/) override {}

    void type(TypedText text, std::function<void()> onDone) override;

    std::optional<platform::ProcessIdentifier> frontmostProcess() const override;
    std::optional<platform::ProcessIdentifier> chooseTarget() override;

  private:
    // The operations from here on are for the loop's thread.
    void run();
    void begin(std::unique_ptr<SwayConnection> connection);
    bool connectAgain();
    SwaySession::Events events();
    void handleReady(const std::string& typingRefusal);
    void handleLoss(const std::string& reason);
    void finish();

    platform::MainQueue& mainQueue_;
    platform::Log& log_;
    const HotKeyNotifier notifier_;
    PollLoop loop_;
    Deadline endDeadline_{loop_};
    Reconnection reconnection_;
    std::atomic<bool> isConnected_ = false;
    // Of the last chooseTarget(). Main thread only.
    WindowFocus::Window target_;
    mutable std::mutex mutex_;
    // All under the mutex.
    WindowFocus::Window front_;
    std::optional<std::string> refusal_;
    std::optional<std::string> typingRefusal_;
    std::promise<void> firstAnswer_;
    // From here on for the loop's thread.
    std::unique_ptr<SwaySession> session_;
    bool hasAnswered_ = false;
    bool isLost_ = false;
    // The registered hotkeys with their modifiers, for the next session.
    std::map<HotKeyNumber, std::uint32_t> hotKeys_;
    std::thread thread_;
};

}  // namespace tarvik::linuxdesktop
