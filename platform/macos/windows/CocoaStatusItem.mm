// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaStatusItem.h"

#include <utility>

#import "platform/macos/Strings.h"
#import "platform/macos/windows/CocoaAppearance.h"
#import "platform/macos/windows/CocoaImage.h"
#import "platform/macos/windows/CocoaMenu.h"

namespace tarvik::macdesktop {

CocoaStatusItem::CocoaStatusItem()
    : item_([NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength]) {}

CocoaStatusItem::~CocoaStatusItem() {
    [NSStatusBar.systemStatusBar removeStatusItem:item_];
}

platform::StatusButton* CocoaStatusItem::button() {
    return item_.button != nil ? this : nullptr;
}

void CocoaStatusItem::setMenu(std::shared_ptr<platform::Menu> menu) {
    [item_ setMenu:menu ? static_cast<const CocoaMenu&>(*menu).nsMenu() : nil];
    menu_ = std::move(menu);
}

void CocoaStatusItem::setImage(std::shared_ptr<platform::Image> image) {
    [item_.button setImage:nsImageOf(image)];
}

void CocoaStatusItem::setContentTintColor(std::optional<platform::SystemColor> color) {
    [item_.button setContentTintColor:color ? nsColor(*color) : nil];
}

void CocoaStatusItem::setTitle(const std::string& title) {
    [item_.button setTitle:nsString(title)];
}

}  // namespace tarvik::macdesktop
