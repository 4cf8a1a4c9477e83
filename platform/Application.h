#pragma once

#include <memory>
#include <optional>

namespace tarvik::platform {

/// How the application shows itself to the desktop; the values are AppKit's.
enum class ActivationPolicy { regular = 0, accessory = 1, prohibited = 2 };

/// What the system says about a launch that has finished.
struct LaunchNotification {
    /// Whether the user simply started the application; absent when the system does not say, or
    /// does not say it as a truth value.
    std::optional<bool> isDefaultLaunch;
};

/// What a desktop may ask the running application to do, by a shortcut of its own for example.
enum class ApplicationAction {
    /// What the hotkey of long-form dictation does.
    toggle,
    /// Brings up the setup window.
    setup
};

/// What the application tells its delegate. All on the main thread.
class ApplicationDelegate {
  public:
    virtual ~ApplicationDelegate() = default;

    /// Once, in an early turn of the loop; the services that learn what they know from another
    /// program (permissions, focus) know it by then, or it takes too long to wait for them.
    virtual void applicationDidFinishLaunching(const LaunchNotification& notification) = 0;
    /// The user opened the running application again. The answer is whether the system should do
    /// what it usually does.
    virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
    /// The user asked the desktop for `action`.
    virtual void applicationShouldPerform(ApplicationAction action) = 0;
};

/// The running application. Main thread only.
class Application {
  public:
    virtual ~Application() = default;

    /// The application holds the delegate until it is destroyed.
    virtual void setDelegate(std::shared_ptr<ApplicationDelegate> delegate) = 0;
    /// Decides whether the desktop lists the application among those that the user switches
    /// between. Nothing happens where windows alone decide that.
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;
    /// Runs the event loop; comes back, with the process's exit status, only after terminate().
    virtual int run() = 0;
    /// Ends the event loop after the present turn, or the whole process within the call where the
    /// desktop's toolkit does that; whoever calls it does so last. Allowed before run(), which then
    /// ends at once.
    virtual void terminate() = 0;
    /// Asks to become the active application, the way the desktop prefers to be asked today.
    virtual void activate() = 0;
    /// Brings the application's windows in front of those of other applications, as far as the
    /// desktop allows it.
    virtual void activateIgnoringOtherApps() = 0;
};

}  // namespace tarvik::platform
