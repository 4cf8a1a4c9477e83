// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaStatusItem.h"

#include <utility>

#import "platform/macos/Strings.h"
#import "platform/macos/windows/CocoaAppearance.h"
#import "platform/macos/windows/CocoaImage.h"
#import "platform/macos/windows/CocoaMenu.h"

namespace tarvik::macdesktop {

namespace {

NSImage* colouredImage(NSImage* symbol, NSColor* colour) {
    NSImage* image =
        [symbol imageWithSymbolConfiguration:[NSImageSymbolConfiguration
                                                 configurationWithPaletteColors:@[ colour ]]];
    [image setTemplate:NO];
    [image setAccessibilityDescription:symbol.accessibilityDescription];
    // The tint alone is left for an image that is no symbol.
    return image != nil ? image : symbol;
}

}  // namespace

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
    image_ = nsImageOf(image);
    showImage();
}

void CocoaStatusItem::setContentTintColor(std::optional<platform::SystemColor> color) {
    tint_ = color ? nsColor(*color) : nil;
    [item_.button setContentTintColor:tint_];
    showImage();
}

void CocoaStatusItem::setTitle(const std::string& title) {
    [item_.button setTitle:nsString(title)];
}

void CocoaStatusItem::showImage() {
    [item_.button setImage:tint_ != nil ? colouredImage(image_, tint_) : image_];
}

}  // namespace tarvik::macdesktop
