// SPDX-License-Identifier: MIT
#pragma once

#import <AppKit/AppKit.h>

#include "platform/Window.h"

@class TarvikWindowDelegate;

namespace tarvik::macdesktop {

/// A window as an NSWindow with its controller. Closing does not release the NSWindow. Main thread
/// only.
class CocoaWindow final : public platform::Window {
  public:
    explicit CocoaWindow(const platform::WindowDescription& description);
    ~CocoaWindow() override;
    CocoaWindow(const CocoaWindow&) = delete;
    CocoaWindow& operator=(const CocoaWindow&) = delete;

    void setContent(std::shared_ptr<platform::View> root,
                    std::optional<platform::RgbColor> background) override;
    platform::Rect frame() const override;
    void setFrameOrigin(platform::Point origin) override;
    void center() override;
    void show() override;
    void orderFrontRegardless() override;
    bool isVisible() const override;
    void close() override;

  private:
    void focusNoControl();

    NSWindow* window_;
    NSWindowController* controller_;
    /// NSWindow holds its delegate weakly.
    TarvikWindowDelegate* delegate_;
    std::shared_ptr<platform::View> root_;
};

}  // namespace tarvik::macdesktop
