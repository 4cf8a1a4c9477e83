// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>

namespace tarvik::platform {

/// How the desktop presents the application. The values are AppKit's.
enum class ActivationPolicy { regular = 0, accessory = 1, prohibited = 2 };

/// What the system reports about a finished launch.
struct LaunchNotification {
    /// Whether the user started the application in the ordinary way, without a document or a
    /// task. Absent when the system gives no truth value for this.
    std::optional<bool> isDefaultLaunch;
};

/// What a desktop may ask of the running application, for example through one of its shortcuts.
enum class ApplicationAction {
    /// Starts or ends a recording, like the hotkey of long-form dictation.
    toggle,
    /// Starts a recording, as pressing the hold hotkey does. Does nothing while a recording runs.
    press,
    /// Ends the recording, as releasing the hold hotkey does.
    release,
    /// Brings up the setup window.
    setup,
    /// Asks the user for the API key.
    keyPrompt
};

/// Receives the events of the application. Every call comes on the main thread.
class ApplicationDelegate {
  public:
    virtual ~ApplicationDelegate() = default;

    /// Called once, in an early turn of the event loop. Services that get their state from another
    /// program (permissions, focus) have it by then, unless that program takes too long to answer.
    virtual void applicationDidFinishLaunching(const LaunchNotification& notification) = 0;
    /// The user opened the running application again. Returns whether the system should do its
    /// default action as well.
    virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
    /// The user requested `action` through the desktop.
    virtual void applicationShouldPerform(ApplicationAction action) = 0;
    /// The application is about to end. The delegate calls `onReady` once, inside this call or
    /// within a few seconds, when nothing is left to finish. The event loop runs until then. macOS
    /// ends the application without this call.
    virtual void applicationShouldTerminate(std::function<void()> onReady) = 0;
};

/// The running application. Main thread only.
class Application {
  public:
    virtual ~Application() = default;

    /// Sets the delegate. The application holds the delegate until the application is destroyed.
    virtual void setDelegate(std::shared_ptr<ApplicationDelegate> delegate) = 0;
    /// Sets whether the desktop lists the application in its application switcher. Does nothing on
    /// desktops that list every program with a window.
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;
    /// Runs the event loop. Returns only after terminate(), with the exit status of the process.
    virtual int run() = 0;
    /// Ends the event loop, after the current turn or when the delegate is ready. Some toolkits end
    /// the whole process inside the call, so a caller calls it last. Allowed before run(): run()
    /// then returns at once.
    virtual void terminate() = 0;
    /// Asks to become the active application, in the way that the desktop recommends today. A
    /// backend may refuse the keyboard to windows for which the user has not asked.
    virtual void activate() = 0;
    /// Brings the application's windows in front of all other applications, as far as the desktop
    /// allows this. A backend may refuse the keyboard as for activate().
    virtual void activateIgnoringOtherApps() = 0;
};

}  // namespace tarvik::platform
