// SPDX-License-Identifier: MIT
#pragma once

#import <AppKit/AppKit.h>

#include "platform/StatusItem.h"

namespace tarvik::macdesktop {

/// The status item as an NSStatusItem of the system's bar. Main thread only.
///
/// The system documents the tint of a button for template images alone. The image of a tinted
/// button therefore also has the colour of the tint in itself.
class CocoaStatusItem final : public platform::StatusItem, public platform::StatusButton {
  public:
    CocoaStatusItem();
    ~CocoaStatusItem() override;
    CocoaStatusItem(const CocoaStatusItem&) = delete;
    CocoaStatusItem& operator=(const CocoaStatusItem&) = delete;

    platform::StatusButton* button() override;
    void setMenu(std::shared_ptr<platform::Menu> menu) override;

    void setImage(std::shared_ptr<platform::Image> image) override;
    void setContentTintColor(std::optional<platform::SystemColor> color) override;
    void setTitle(const std::string& title) override;

  private:
    void showImage();

    NSStatusItem* item_;
    NSImage* image_ = nil;
    /// Nil without a tint.
    NSColor* tint_ = nil;
    /// Held because the NSMenu holds neither its delegate nor its items' targets.
    std::shared_ptr<platform::Menu> menu_;
};

}  // namespace tarvik::macdesktop
