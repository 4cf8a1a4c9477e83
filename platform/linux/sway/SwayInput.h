// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
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
#include "platform/linux/input/XProgramHost.h"
#include "platform/linux/wayland/TargetWindow.h"

namespace tarvik::linuxdesktop {

/// Hotkeys as bindings of Sway, typing through a virtual keyboard, and the window in front, of one
/// Sway session. Main thread only, unless a line says otherwise.
class SwayInput final : public HotKeyMeans,
                        public TypingMeans,
                        public FrontMeans,
                        public XProgramHost {
  public:
    /// Connects to the Sway that SWAYSOCK names, as InputThread does. The references outlive the
    /// object.
    SwayInput(platform::MainQueue& mainQueue, platform::Log& log,
              std::weak_ptr<HotKeyListener> listener);

    /// Why this session has no Sway; empty while it has one, and while Sway has not answered yet.
    std::optional<std::string> refusal() const { return thread_.refusal(); }
    /// The same for typing.
    std::optional<std::string> typingRefusal() const { return thread_.typingRefusal(); }

    bool isAvailable() const override { return thread_.isConnected(); }

    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                      std::uint32_t modifiers) override {
        return thread_.registerHotKey(number, keyCode, modifiers);
    }
    void unregisterHotKey(HotKeyNumber number) override { thread_.unregisterHotKey(number); }
    /// Nothing is left to do: typing lifts no modifier here, and no other means types in the
    /// session.
    void expectLift(std::uint32_t /*modifiers*/) override {}

    /// The virtual keyboard reaches them, but each change of its map takes an X server 0.2 s.
    bool servesXPrograms() const override { return false; }
    void type(TypedText text, std::function<void()> onDone) override;

    std::optional<platform::ProcessIdentifier> frontmostProcess() const override {
        return target_.frontmostProcess();
    }
    std::optional<platform::ProcessIdentifier> chooseTarget() override { return target_.choose(); }

    void setAccompaniment(std::function<void()> accompanyAlt) override;
    void setXProgramObserver(std::function<void()> onXProgram) override;
    void lendKeyboard(std::uint32_t window) override;
    void giveKeyboardBack(std::uint32_t window) override;

  private:
    void handleFront(WindowFocus::Window front);
    bool accompanyInX() const;

    mutable std::mutex mutex_;
    // Both under the mutex.
    std::function<void()> accompanyAlt_;
    std::function<void()> onXProgram_;
    TargetWindow target_;
    InputThread thread_;
};

}  // namespace tarvik::linuxdesktop
