#pragma once

#include <memory>
#include <optional>

#include "platform/EventManager.h"
#include "platform/KeyboardEvents.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/Workspace.h"

namespace tarvik::linuxdesktop {

class InputThread;
class LinuxEventManager;
class LinuxKeyboardEvents;

/// Keyboard and focus of an X11 desktop: hotkeys, typing, and which process is in front.
///
/// It has a connection to the X server and a thread of its own, which sleeps until the server or
/// the main thread wants something. Main thread only, unless a line says otherwise.
class X11Input {
  public:
    /// Connects to the server that DISPLAY names, for which it waits 1 s at the most. Never empty:
    /// without a usable server there is an object whose event manager answers eventInternalErr,
    /// whose keyboard refuses, and the log says why. A server that answers only later is used from
    /// then on; hotkeys are to be registered anew. The references outlive the object.
    static std::unique_ptr<X11Input> open(platform::MainQueue& mainQueue, platform::Log& log);

    /// Ends the thread, puts the keyboard map back and drops the hotkeys; text that was posted
    /// before is typed first, as far as its readers take it within 0.8 s. No handler is called any
    /// more. Takes 1 s at the most.
    ~X11Input();
    X11Input(const X11Input&) = delete;
    X11Input& operator=(const X11Input&) = delete;

    platform::EventManager& eventManager();
    platform::KeyboardEvents& keyboardEvents();

    /// The process whose window has the keyboard, this one included; empty when there is none or
    /// it is not known. Answered from what the thread has noticed last, without asking anybody. Any
    /// thread.
    std::optional<platform::ProcessIdentifier> frontmostProcess() const;

    /// Whether text can be typed: the server has the extensions it takes, and it is still there.
    /// Any thread.
    bool canType() const;

  private:
    struct Delivery;

    X11Input(platform::MainQueue& mainQueue, platform::Log& log);

    std::shared_ptr<Delivery> delivery_;
    std::unique_ptr<InputThread> thread_;
    std::shared_ptr<LinuxEventManager> eventManager_;
    std::shared_ptr<LinuxKeyboardEvents> keyboardEvents_;
};

}  // namespace tarvik::linuxdesktop
