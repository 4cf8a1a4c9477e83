// SPDX-License-Identifier: MIT

// The contracts repeat values of the system. Each of them equals the system's own value. Compiling
// this file is the test.
//
// Two values are missing: NSVariableStatusItemLength (-1) and NSLayoutPriorityDefaultLow (250) are
// floating variables in the system's headers, which no static_assert can read.
#import <AVFoundation/AVFoundation.h>
#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>
#import <Carbon/Carbon.h>
#import <CoreGraphics/CoreGraphics.h>
#import <ServiceManagement/ServiceManagement.h>

#include <cstdint>
#include <type_traits>

#include "platform/Platform.h"
#include "platform/macos/Conversions.h"

namespace tarvik::platform {

namespace {

template <typename Value>
constexpr std::int64_t raw(Value value) {
    return static_cast<std::int64_t>(value);
}

// The value, the contract's name for it and the system's.
#define TARVIK_SAME(number, ours, theirs) \
    static_assert(raw(ours) == (number) && raw(theirs) == (number))

// Application
TARVIK_SAME(0, ActivationPolicy::regular, NSApplicationActivationPolicyRegular);
TARVIK_SAME(1, ActivationPolicy::accessory, NSApplicationActivationPolicyAccessory);
TARVIK_SAME(2, ActivationPolicy::prohibited, NSApplicationActivationPolicyProhibited);

// Windows
TARVIK_SAME(1, titledWindow, NSWindowStyleMaskTitled);
TARVIK_SAME(2, closableWindow, NSWindowStyleMaskClosable);
TARVIK_SAME(4, miniaturizableWindow, NSWindowStyleMaskMiniaturizable);
TARVIK_SAME(8, resizableWindow, NSWindowStyleMaskResizable);
TARVIK_SAME(7, titledWindow | closableWindow | miniaturizableWindow,
            NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable);
TARVIK_SAME(15, titledWindow | closableWindow | miniaturizableWindow | resizableWindow,
            NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable |
                NSWindowStyleMaskResizable);
TARVIK_SAME(1, canJoinAllSpaces, NSWindowCollectionBehaviorCanJoinAllSpaces);
TARVIK_SAME(256, fullScreenAuxiliary, NSWindowCollectionBehaviorFullScreenAuxiliary);
TARVIK_SAME(257, canJoinAllSpaces | fullScreenAuxiliary,
            NSWindowCollectionBehaviorCanJoinAllSpaces |
                NSWindowCollectionBehaviorFullScreenAuxiliary);
TARVIK_SAME(0, WindowLevel::normal, NSNormalWindowLevel);
TARVIK_SAME(3, WindowLevel::floating, NSFloatingWindowLevel);

// Views
TARVIK_SAME(1, BezelStyle::rounded, NSBezelStylePush);
TARVIK_SAME(13, BezelStyle::recessed, NSBezelStyleAccessoryBar);
TARVIK_SAME(0, ControlSize::regular, NSControlSizeRegular);
TARVIK_SAME(3, ControlSize::large, NSControlSizeLarge);
TARVIK_SAME(0, ImageScaling::proportionallyDown, NSImageScaleProportionallyDown);
TARVIK_SAME(3, ImageScaling::proportionallyUpOrDown, NSImageScaleProportionallyUpOrDown);
TARVIK_SAME(0, Orientation::horizontal, NSUserInterfaceLayoutOrientationHorizontal);
TARVIK_SAME(1, Orientation::vertical, NSUserInterfaceLayoutOrientationVertical);
TARVIK_SAME(5, StackAlignment::leading, NSLayoutAttributeLeading);
TARVIK_SAME(9, StackAlignment::centerX, NSLayoutAttributeCenterX);
TARVIK_SAME(10, StackAlignment::centerY, NSLayoutAttributeCenterY);
static_assert(std::is_same_v<LayoutPriority, NSLayoutPriority>);

// Menus and alerts
TARVIK_SAME(0x20000, shiftKeyFlag, NSEventModifierFlagShift);
TARVIK_SAME(0x100000, commandKeyFlag, NSEventModifierFlagCommand);
TARVIK_SAME(0x120000, commandKeyFlag | shiftKeyFlag,
            NSEventModifierFlagCommand | NSEventModifierFlagShift);
TARVIK_SAME(1000, alertFirstButtonReturn, NSAlertFirstButtonReturn);
static_assert(NSAlertStyleInformational == 1);

// Hotkeys
TARVIK_SAME(0, platform::noErr, ::noErr);
TARVIK_SAME(-9874, platform::eventNotHandledErr, ::eventNotHandledErr);
TARVIK_SAME(-9878, platform::eventHotKeyExistsErr, ::eventHotKeyExistsErr);
TARVIK_SAME(-9879, platform::eventHotKeyInvalidErr, ::eventHotKeyInvalidErr);
TARVIK_SAME(fourCharacterCode("keyb"), eventClassKeyboard, kEventClassKeyboard);
TARVIK_SAME(5, eventHotKeyPressed, kEventHotKeyPressed);
TARVIK_SAME(6, eventHotKeyReleased, kEventHotKeyReleased);
TARVIK_SAME(fourCharacterCode("----"), eventParamDirectObject, kEventParamDirectObject);
TARVIK_SAME(fourCharacterCode("hkid"), platform::typeEventHotKeyID, ::typeEventHotKeyID);
TARVIK_SAME(49, spaceKeyCode, kVK_Space);
TARVIK_SAME(2048, optionKeyMask, optionKey);
TARVIK_SAME(2560, optionKeyMask | shiftKeyMask, optionKey | shiftKey);
static_assert(kEventHotKeyNoOptions == 0);
static_assert(sizeof(platform::EventHotKeyID) == 8 && sizeof(::EventHotKeyID) == 8);
static_assert(std::is_same_v<platform::OSStatus, ::OSStatus>);

// Keyboard
TARVIK_SAME(0, eventSourceStateCombinedSession, kCGEventSourceStateCombinedSessionState);
TARVIK_SAME(0, hidEventTap, kCGHIDEventTap);
static_assert(sizeof(UniChar) == sizeof(char16_t) && sizeof(unichar) == sizeof(char16_t));
static_assert(sizeof(ProcessIdentifier) == sizeof(pid_t));

// Accessibility
TARVIK_SAME(0, axErrorSuccess, kAXErrorSuccess);
TARVIK_SAME(-25200, axErrorFailure, kAXErrorFailure);
TARVIK_SAME(-25201, axErrorIllegalArgument, kAXErrorIllegalArgument);
TARVIK_SAME(-25202, axErrorInvalidUIElement, kAXErrorInvalidUIElement);
TARVIK_SAME(-25204, axErrorCannotComplete, kAXErrorCannotComplete);
TARVIK_SAME(-25205, axErrorAttributeUnsupported, kAXErrorAttributeUnsupported);
TARVIK_SAME(-25208, axErrorNotImplemented, kAXErrorNotImplemented);
TARVIK_SAME(-25211, axErrorAPIDisabled, kAXErrorAPIDisabled);
TARVIK_SAME(-25212, axErrorNoValue, kAXErrorNoValue);

// Permissions and login
TARVIK_SAME(0, AuthorizationStatus::notDetermined, AVAuthorizationStatusNotDetermined);
TARVIK_SAME(1, AuthorizationStatus::restricted, AVAuthorizationStatusRestricted);
TARVIK_SAME(2, AuthorizationStatus::denied, AVAuthorizationStatusDenied);
TARVIK_SAME(3, AuthorizationStatus::authorized, AVAuthorizationStatusAuthorized);
TARVIK_SAME(0, LoginItemStatus::notRegistered, SMAppServiceStatusNotRegistered);
TARVIK_SAME(1, LoginItemStatus::enabled, SMAppServiceStatusEnabled);
TARVIK_SAME(2, LoginItemStatus::requiresApproval, SMAppServiceStatusRequiresApproval);
TARVIK_SAME(3, LoginItemStatus::notFound, SMAppServiceStatusNotFound);

// Web sockets
static_assert(NSURLRequestUseProtocolCachePolicy == 0);
TARVIK_SAME(1001, closeCodeGoingAway, NSURLSessionWebSocketCloseCodeGoingAway);
static_assert(NSURLSessionWebSocketCloseCodeNormalClosure == 1000);
TARVIK_SAME(0, macdesktop::dataMessageType, NSURLSessionWebSocketMessageTypeData);
TARVIK_SAME(1, macdesktop::stringMessageType, NSURLSessionWebSocketMessageTypeString);

}  // namespace

}  // namespace tarvik::platform
