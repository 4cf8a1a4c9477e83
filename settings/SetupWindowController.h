#pragma once

#include "platform/Platform.h"

namespace tarvik {

/// The window in which a user gets the application ready. Main thread only.
class SetupWindowController {
  public:
    explicit SetupWindowController(platform::Platform& platform);

    /// The one controller of the current platform. Any thread.
    static SetupWindowController& shared();

    /// Brings the window up. Any number of times.
    void show();

  private:
    platform::UserInterface& userInterface_;
};

}  // namespace tarvik
