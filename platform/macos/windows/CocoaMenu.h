// SPDX-License-Identifier: MIT
#pragma once

#import <AppKit/AppKit.h>

#include "platform/StatusItem.h"

@class TarvikMenuDelegate;

namespace tarvik::macdesktop {

/// A menu as an NSMenu. Main thread only.
class CocoaMenu final : public platform::Menu {
  public:
    CocoaMenu();

    void setItems(std::vector<platform::MenuItem> items) override;
    void setNeedsUpdateHandler(std::function<void()> handler) override;

    NSMenu* nsMenu() const { return menu_; }

  private:
    NSMenu* menu_;
    /// NSMenu holds its delegate weakly, as its items hold their targets.
    TarvikMenuDelegate* delegate_;
    NSMutableArray<NSObject*>* targets_;
};

}  // namespace tarvik::macdesktop
