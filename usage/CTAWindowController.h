#pragma once

#include "platform/Platform.h"
#include "usage/CTATier.h"

namespace tarvik {

/// The call-to-action window. Main thread only.
class CTAWindowController {
  public:
    explicit CTAWindowController(platform::Platform& platform);

    /// The one controller of the current platform. Any thread.
    static CTAWindowController& shared();

    /// Brings the window up with the texts of `tier`.
    void show(CTATier tier);

  private:
    platform::UserInterface& userInterface_;
};

}  // namespace tarvik
