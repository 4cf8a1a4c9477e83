// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Log.h"
#include "platform/LoginItemService.h"
#include "platform/UserDefaults.h"

namespace tarvik {

/// Starts the application when the user logs in. Main thread only.
class LoginItem {
  public:
    LoginItem() = delete;

    /// Registers or unregisters the application, whatever its current status. Returns false and
    /// logs the error when the system refuses.
    static bool setEnabled(bool enabled, platform::LoginItemService& service, platform::Log& log);

    /// Registers the application unless an earlier launch has already succeeded in that. A user who
    /// switches the login item off later is therefore not overruled.
    static void enableOnFirstRun(platform::LoginItemService& service,
                                 platform::UserDefaults& defaults, platform::Log& log);
};

}  // namespace tarvik
