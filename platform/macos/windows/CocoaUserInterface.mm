// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaUserInterface.h"

#import "platform/macos/Strings.h"
#import "platform/macos/windows/CocoaAlert.h"
#import "platform/macos/windows/CocoaAppearance.h"
#import "platform/macos/windows/CocoaButton.h"
#import "platform/macos/windows/CocoaCheckbox.h"
#include "platform/macos/windows/CocoaEditMenu.h"
#import "platform/macos/windows/CocoaImage.h"
#import "platform/macos/windows/CocoaImageView.h"
#import "platform/macos/windows/CocoaLabel.h"
#import "platform/macos/windows/CocoaMenu.h"
#import "platform/macos/windows/CocoaSeparator.h"
#import "platform/macos/windows/CocoaSpacer.h"
#import "platform/macos/windows/CocoaStack.h"
#import "platform/macos/windows/CocoaStatusItem.h"
#import "platform/macos/windows/CocoaTextField.h"
#import "platform/macos/windows/CocoaWindow.h"

namespace tarvik::macdesktop {

std::shared_ptr<platform::StatusItem> CocoaUserInterface::makeStatusItem() {
    return std::make_shared<CocoaStatusItem>();
}

std::shared_ptr<platform::Menu> CocoaUserInterface::makeMenu() {
    return std::make_shared<CocoaMenu>();
}

void CocoaUserInterface::installMainMenu(const std::string& title,
                                         const std::vector<platform::EditMenuItem>& items) {
    installEditMenu(title, items);
}

std::shared_ptr<platform::Image> CocoaUserInterface::systemSymbol(
    const std::string& name, const std::string& accessibilityDescription) {
    return imageOrNone([NSImage imageWithSystemSymbolName:nsString(name)
                                 accessibilityDescription:nsString(accessibilityDescription)]);
}

std::shared_ptr<platform::Image> CocoaUserInterface::imageNamed(const std::string& name) {
    return imageOrNone([NSImage imageNamed:nsString(name)]);
}

std::shared_ptr<platform::Image> CocoaUserInterface::applicationIconImage() {
    return imageOrNone(NSApplication.sharedApplication.applicationIconImage);
}

// By this name the system gives its generic icon to an application that has none.
std::shared_ptr<platform::Image> CocoaUserInterface::genericApplicationIcon() {
    return imageOrNone([NSImage imageNamed:NSImageNameApplicationIcon]);
}

platform::AlertAnswer CocoaUserInterface::runModal(const platform::Alert& alert) {
    return runAlert(alert);
}

std::shared_ptr<platform::Label> CocoaUserInterface::makeLabel(
    const platform::LabelDescription& description) {
    return std::make_shared<CocoaLabel>(description);
}

std::shared_ptr<platform::TextField> CocoaUserInterface::makeTextField(
    const platform::TextFieldDescription& description) {
    return std::make_shared<CocoaTextField>(description);
}

std::shared_ptr<platform::Button> CocoaUserInterface::makeButton(
    const platform::ButtonDescription& description) {
    return std::make_shared<CocoaButton>(description);
}

std::shared_ptr<platform::Checkbox> CocoaUserInterface::makeCheckbox(
    const platform::CheckboxDescription& description) {
    return std::make_shared<CocoaCheckbox>(description);
}

std::shared_ptr<platform::View> CocoaUserInterface::makeImageView(
    const platform::ImageViewDescription& description) {
    return std::make_shared<CocoaImageView>(description);
}

std::shared_ptr<platform::View> CocoaUserInterface::makeSeparator() {
    return std::make_shared<CocoaSeparator>();
}

std::shared_ptr<platform::View> CocoaUserInterface::makeSpacer(const platform::ViewLayout& layout) {
    return std::make_shared<CocoaSpacer>(layout);
}

std::shared_ptr<platform::View> CocoaUserInterface::makeStack(
    const platform::StackDescription& description) {
    return std::make_shared<CocoaStack>(description);
}

std::shared_ptr<platform::Window> CocoaUserInterface::makeWindow(
    const platform::WindowDescription& description) {
    return std::make_shared<CocoaWindow>(description);
}

std::optional<platform::Rect> CocoaUserInterface::mainScreenVisibleFrame() {
    NSScreen* screen = NSScreen.mainScreen;
    return screen != nil ? std::optional(rectFrom(screen.visibleFrame)) : std::nullopt;
}

}  // namespace tarvik::macdesktop
