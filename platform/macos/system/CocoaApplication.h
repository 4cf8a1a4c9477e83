#pragma once

#import <AppKit/AppKit.h>

#include "platform/Application.h"

@class TarvikApplicationDelegate;

namespace tarvik::macdesktop {

/// The process's NSApplication. Main thread only.
///
/// The system ends the process inside terminate(): neither it nor run() comes back.
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
    /// NSApplication holds its delegate weakly. This one holds ours strongly.
    TarvikApplicationDelegate* delegate_;
};

}  // namespace tarvik::macdesktop
