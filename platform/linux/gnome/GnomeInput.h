// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/Workspace.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/input/InputThread.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/input/XHoldListener.h"

namespace tarvik::linuxdesktop {

class ShortcutHold;

/// Hotkeys as custom shortcuts and typing by an engine of IBus, of a GNOME session on Wayland. Main
/// thread only, unless a line says otherwise.
class GnomeInput final : public HotKeyMeans, public TypingMeans, public XHoldListener {
  public:
    /// Tells which process has the keyboard; empty where unknown. Any thread; does not block.
    using Front = std::function<std::optional<platform::ProcessIdentifier>()>;

    /// Asks the session bus for GNOME Shell, as InputThread does. The references outlive the
    /// object. Without `front`, text goes to whichever field has the keyboard.
    GnomeInput(platform::MainQueue& mainQueue, platform::Log& log,
               std::weak_ptr<HotKeyListener> listener, const Front& front);

    /// Why this session has no GNOME Shell on Wayland; empty while it has one, and while nobody has
    /// answered yet.
    std::optional<std::string> refusal() const { return thread_.refusal(); }
    /// The same for typing.
    std::optional<std::string> typingRefusal() const { return thread_.typingRefusal(); }

    bool isAvailable() const override { return thread_.isConnected(); }
    bool servesXPrograms() const override { return false; }

    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                      std::uint32_t modifiers) override {
        return thread_.registerHotKey(number, keyCode, modifiers);
    }
    void unregisterHotKey(HotKeyNumber number) override { thread_.unregisterHotKey(number); }
    /// Nothing is left to do: typing lifts no modifier here.
    void expectLift(std::uint32_t /*modifiers*/) override {}
    bool canTakeOver() const override { return canTakeOver_; }
    void takeOver() override;

    void type(TypedText text, std::function<void()> onDone) override {
        thread_.type(std::move(text), 0, std::move(onDone));
    }

    // Any thread.
    void setXFollower(Follow follow) override;
    void handleKeysSeenInX(std::uint64_t hold, bool areSeen) override;
    void handleReleaseInX(std::uint64_t hold) override;

  private:
    /// Loop thread only.
    void tellX(std::optional<std::uint64_t> hold);
    /// Calls `action` on the loop's thread, unless there is no session. Any thread.
    void withHold(std::function<void(ShortcutHold&)> action);

    std::mutex mutex_;
    // Under the mutex.
    Follow followX_;
    std::atomic<bool> canTakeOver_ = false;
    InputThread thread_;
};

}  // namespace tarvik::linuxdesktop
