// SPDX-License-Identifier: MIT
#pragma once

#import <AppKit/AppKit.h>

#include "platform/Views.h"

namespace tarvik::macdesktop {

/// The base of every view of this user interface: an NSView. A superview also holds the NSView.
/// Main thread only.
class CocoaView {
  public:
    virtual ~CocoaView() = default;
    CocoaView(const CocoaView&) = delete;
    CocoaView& operator=(const CocoaView&) = delete;

    NSView* nsView() const { return view_; }
    /// Whether the view takes the spare width of its row, or the whole width of its column.
    bool isStretchable() const { return isStretchable_; }

  protected:
    /// Applies `layout` to `view`.
    CocoaView(NSView* view, const platform::ViewLayout& layout);
    CocoaView(NSView* view, bool isStretchable);

  private:
    NSView* view_;
    bool isStretchable_;
};

/// `view`, which this user interface has made, as a CocoaView.
CocoaView& cocoaViewOf(platform::View& view);

}  // namespace tarvik::macdesktop
