// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// The startup notification of one user action, from the request that it led to until the request
/// has been carried out. Main thread only; nothing waits for the desktop.
///
/// Windows that come to the front while the object lives ask for the keyboard with the time of the
/// action. At its end the desktop is told that the startup is complete, and ends its busy cursor.
/// Notifications may be nested; the newest one counts.
class StartupNotification {
  public:
    /// `id` names the action to the display server: a startup id on X11, an activation token on
    /// Wayland. An empty id stands for an unknown action.
    explicit StartupNotification(std::string id);
    ~StartupNotification();
    StartupNotification(const StartupNotification&) = delete;
    StartupNotification& operator=(const StartupNotification&) = delete;

    /// The X server's time of the action that is being carried out; 0 when the time is unknown or
    /// no action is being carried out.
    static std::uint32_t currentTime();

    /// The X server's time that `id` holds; 0 when it holds none.
    static std::uint32_t timeIn(std::string_view id);

  private:
    std::string id_;
    std::uint32_t outerTime_;
};

}  // namespace tarvik::linuxdesktop
