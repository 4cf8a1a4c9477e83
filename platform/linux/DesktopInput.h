// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "platform/EventManager.h"
#include "platform/KeyboardEvents.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/Workspace.h"

namespace tarvik::linuxdesktop {

struct AccessibilityState;
class FrontMeans;
class HotKeyMeans;
class LinuxEventManager;
class LinuxKeyboardEvents;
class TypingMeans;

/// Hotkeys, typing and the process in front, each by the first means that serves this session.
///
/// The session is asked what it offers, means by means, in the order of three tables. Each answer
/// is one line in the log, with its reason. A service without a means refuses what it is asked for.
/// Main thread only, unless a line says otherwise.
class DesktopInput {
  public:
    /// Asks the session; waits 1 s at the most for each server that does not answer. The references
    /// outlive the object. `accessibility` is empty where no accessibility service runs.
    DesktopInput(platform::MainQueue& mainQueue, platform::Log& log,
                 std::shared_ptr<const AccessibilityState> accessibility = nullptr);
    /// Drops the hotkeys and types the text that was posted before, as the means promise.
    ~DesktopInput();
    DesktopInput(const DesktopInput&) = delete;
    DesktopInput& operator=(const DesktopInput&) = delete;

    /// As HotKeyMeans.
    bool canTakeOverHotKeys() const;
    void takeOverHotKeys();

    platform::EventManager& eventManager();
    platform::KeyboardEvents& keyboardEvents();

    /// As FrontMeans; empty without a means. Where the display does not know, it is the program
    /// that last activated a window, as programs report it. Any thread.
    std::optional<platform::ProcessIdentifier> frontmostProcess() const;
    /// As FrontMeans; empty without a means.
    std::optional<platform::ProcessIdentifier> chooseTarget();
    /// Whether text can be typed at present. Any thread.
    bool canType() const;
    /// Whether text for `process` is still on its way by typing, or has to go that way since it may
    /// belong to another process.
    bool isTypingInto(platform::ProcessIdentifier process) const;
    /// As LinuxKeyboardEvents.
    std::optional<std::size_t> holdTyping(platform::ProcessIdentifier process);
    void releaseTyping(platform::ProcessIdentifier process, std::size_t units);

  private:
    // Means of one technology may be one object. Whatever uses a means stands behind it.
    std::shared_ptr<LinuxEventManager> eventManager_;
    std::shared_ptr<HotKeyMeans> hotKeys_;
    std::shared_ptr<TypingMeans> typing_;
    std::shared_ptr<FrontMeans> front_;
    // What programs report; empty where no accessibility service runs.
    std::shared_ptr<const FrontMeans> reports_;
    std::shared_ptr<LinuxKeyboardEvents> keyboardEvents_;
};

}  // namespace tarvik::linuxdesktop
