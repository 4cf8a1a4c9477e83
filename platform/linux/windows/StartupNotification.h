// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/linux/windows/UserAction.h"

namespace tarvik::linuxdesktop {

/// The startup notification of one user action, from the request that it led to until the request
/// has been carried out. Main thread only; nothing waits for the desktop.
///
/// The object is a UserAction with the time of the startup. At its end the desktop is told that the
/// startup is complete, and ends its busy cursor.
class StartupNotification {
  public:
    /// `id` names the action to the display server: a startup id on X11, an activation token on
    /// Wayland. An empty id stands for an unknown action.
    explicit StartupNotification(std::string id);
    ~StartupNotification();
    StartupNotification(const StartupNotification&) = delete;
    StartupNotification& operator=(const StartupNotification&) = delete;

    /// The X server's time that `id` holds; 0 when it holds none.
    static std::uint32_t timeIn(std::string_view id);

  private:
    std::string id_;
    UserAction action_;
};

}  // namespace tarvik::linuxdesktop
