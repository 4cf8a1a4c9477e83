#pragma once

#import <AppKit/AppKit.h>

#include "platform/Views.h"

namespace tarvik::macdesktop {

/// What every view of this user interface is beside its kind: an NSView, which its superview holds
/// too while it is shown. Main thread only.
class CocoaView {
  public:
    virtual ~CocoaView() = default;
    CocoaView(const CocoaView&) = delete;
    CocoaView& operator=(const CocoaView&) = delete;

    NSView* nsView() const { return view_; }
    /// Whether it takes the width that is left over in its row, or the whole of a column.
    bool stretches() const { return stretches_; }

  protected:
    /// Gives the view what `layout` asks for.
    CocoaView(NSView* view, const platform::ViewLayout& layout);
    CocoaView(NSView* view, bool stretches);

  private:
    NSView* view_;
    bool stretches_;
};

CocoaView& cocoaViewOf(platform::View& view);

}  // namespace tarvik::macdesktop
