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

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/input/FrontMeans.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/input/InputThread.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/settings/TemporaryDesktopFile.h"
#include "platform/linux/wayland/TargetWindow.h"

namespace tarvik::linuxdesktop {

/// Hotkeys as global shortcuts of KDE, typing as KWin's input method, and the window in front, of
/// one KWin session on Wayland. Main thread only, unless a line says otherwise.
class KWinInput final : public HotKeyMeans, public TypingMeans, public FrontMeans {
  public:
    /// Asks the session bus for KWin, as InputThread does, and KWin for what it offers, for which
    /// it waits 1 s at the most, too. The references outlive the object.
    KWinInput(platform::MainQueue& mainQueue, platform::Log& log,
              std::weak_ptr<HotKeyListener> listener);

    /// Why this session has no KWin with shortcuts; empty while it has one, and while nobody has
    /// answered yet on Wayland.
    std::optional<std::string> refusal() const;
    /// The same for the window in front, and for typing, which needs to know the window. Empty also
    /// while KWin has not answered yet.
    std::optional<std::string> frontRefusal() const;

    /// Whether the session bus of a Wayland session had not answered the constructor. KWin is used
    /// from the answer on, if the session is KWin's.
    bool isUndecided() const;

    bool isAvailable() const override { return thread_.isConnected(); }
    bool servesXPrograms() const override { return false; }

    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                      std::uint32_t modifiers) override {
        return thread_.registerHotKey(number, keyCode, modifiers);
    }
    void unregisterHotKey(HotKeyNumber number) override { thread_.unregisterHotKey(number); }
    /// Nothing is left to do: no means that types in the session lifts a modifier.
    void expectLift(std::uint32_t /*modifiers*/) override {}
    bool canTakeOver() const override { return canTakeOver_; }
    void takeOver() override;

    void type(TypedText text, std::function<void()> onDone) override;

    std::optional<platform::ProcessIdentifier> frontmostProcess() const override {
        return target_.frontmostProcess();
    }
    std::optional<platform::ProcessIdentifier> chooseTarget() override { return target_.choose(); }

  private:
    // Loop thread.
    void handleWindows(const std::string& refusal);

    // KWin reads the desktop file when KWin starts, so the file outlives the sessions.
    TemporaryDesktopFile desktopFile_;
    TargetWindow target_;
    std::atomic<bool> canTakeOver_ = false;
    // The session bus has not answered the constructor.
    bool isSilent_ = false;
    mutable std::mutex mutex_;
    // Under the mutex.
    std::optional<std::string> frontRefusal_;
    std::promise<void> windowsKnown_;
    // Loop thread only.
    bool areWindowsKnown_ = false;
    InputThread thread_;
};

}  // namespace tarvik::linuxdesktop
