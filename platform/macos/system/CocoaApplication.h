// SPDX-License-Identifier: MIT
#pragma once

#import <AppKit/AppKit.h>

#include "platform/Application.h"

@class TarvikApplicationDelegate;

namespace tarvik::macdesktop {

/// The process's NSApplication. Main thread only.
///
/// terminate() and run() do not return, because the system ends the process inside terminate().
class CocoaApplication final : public platform::Application {
  public:
    CocoaApplication();
    ~CocoaApplication() override;

    void setDelegate(std::shared_ptr<platform::ApplicationDelegate> delegate) override;
    void setActivationPolicy(platform::ActivationPolicy policy) override;
    int run() override;
    void terminate() override;
    void activate() override;
    void activateIgnoringOtherApps() override;

  private:
    NSApplication* application_;
    /// NSApplication holds its delegate weakly. This delegate holds the core's strongly.
    TarvikApplicationDelegate* delegate_;
};

}  // namespace tarvik::macdesktop
