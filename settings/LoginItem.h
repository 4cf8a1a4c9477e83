#pragma once

#include "platform/Log.h"
#include "platform/LoginItemService.h"
#include "platform/UserDefaults.h"

namespace tarvik {

/// Starts the application when the user logs in. Main thread only.
class LoginItem {
  public:
    LoginItem() = delete;

    /// Registers or unregisters the application, without asking what it is now. False when the
    /// system refused, which is then in the log.
    static bool setEnabled(bool enabled, platform::LoginItemService& service, platform::Log& log);

    /// Registers the application once in its life, so that a user who switches it off later is not
    /// overruled; tried again at each launch until it has succeeded.
    static void enableOnFirstRun(platform::LoginItemService& service,
                                 platform::UserDefaults& defaults, platform::Log& log);
};

}  // namespace tarvik
