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

/// What the application tells its delegate. All on the main thread.
class ApplicationDelegate {
  public:
    virtual ~ApplicationDelegate() = default;

    /// Once, in the first turn of the loop.
    virtual void applicationDidFinishLaunching(const LaunchNotification& notification) = 0;
    /// The user opened the running application again. The answer is whether the system should do
    /// what it usually does.
    virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
};

/// The running application. Main thread only.
class Application {
  public:
    virtual ~Application() = default;

    /// The application holds the delegate until it is destroyed.
    virtual void setDelegate(std::shared_ptr<ApplicationDelegate> delegate) = 0;
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;
    /// Runs the event loop; comes back, with the process's exit status, only after terminate().
    virtual int run() = 0;
    /// Ends the event loop after the present turn. Allowed before run(), which then ends at once.
    virtual void terminate() = 0;
    /// Brings the application's windows in front of those of other applications, as far as the
    /// desktop allows it.
    virtual void activateIgnoringOtherApps() = 0;
};

}  // namespace tarvik::platform
