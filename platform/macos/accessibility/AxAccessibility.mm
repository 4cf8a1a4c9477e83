// SPDX-License-Identifier: MIT

#import "platform/macos/accessibility/AxAccessibility.h"

#import <ApplicationServices/ApplicationServices.h>

#include <utility>

#import "platform/macos/CFHandle.h"
#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

namespace {

// In seconds. Set on the system-wide element, the timeout holds for every element.
constexpr float messagingTimeout = 0.5F;
// The parts of a write, in seconds.
constexpr float questionTimeout = 0.1F;
constexpr float writeTimeout = 0.4F;

struct AxElement final : platform::AXUIElement {
    explicit AxElement(CFHandle<AXUIElementRef> owned) : reference(std::move(owned)) {}

    CFHandle<AXUIElementRef> reference;
    /// Whether a write has failed. Later pieces are typed as well, so that none overtakes another.
    bool isRefused = false;
};

AXUIElementRef axElement(const platform::AXUIElementRef& element) {
    return static_cast<const AxElement&>(*element).reference.get();
}

// 0, which no program has, when the element has no process.
platform::ProcessIdentifier processOf(AXUIElementRef element) {
    pid_t process = 0;
    return AXUIElementGetPid(element, &process) == kAXErrorSuccess ? process : 0;
}

// Terminals and web views are reported to answer success to a write that they ignore, and to say
// when asked that the attribute cannot be set. The question also comes first because a program that
// hangs may carry out a write later, but not a question.
AXError settableStatus(AXUIElementRef element, NSString* attribute) {
    AXUIElementSetMessagingTimeout(element, questionTimeout);
    Boolean isSettable = 0;
    const AXError status =
        AXUIElementIsAttributeSettable(element, (__bridge CFStringRef)attribute, &isSettable);
    return status == kAXErrorSuccess && isSettable == 0 ? kAXErrorAttributeUnsupported : status;
}

}  // namespace

platform::AXUIElementRef AxAccessibility::createSystemWide() {
    CFHandle<AXUIElementRef> element(AXUIElementCreateSystemWide());
    if (element) {
        AXUIElementSetMessagingTimeout(element.get(), messagingTimeout);
    }
    return std::make_shared<AxElement>(std::move(element));
}

platform::AXError AxAccessibility::copyAttributeValue(const platform::AXUIElementRef& element,
                                                      std::string_view attribute,
                                                      platform::AXUIElementRef* outValue) {
    CFTypeRef copied = nullptr;
    const AXError status = AXUIElementCopyAttributeValue(
        axElement(element), (__bridge CFStringRef)nsString(attribute), &copied);
    // Owned with any status and of any type, so that the value is always released.
    CFHandle<CFTypeRef> value(copied);
    if (status == kAXErrorSuccess && value && CFGetTypeID(value.get()) == AXUIElementGetTypeID()) {
        *outValue = std::make_shared<AxElement>(
            CFHandle<AXUIElementRef>(static_cast<AXUIElementRef>(value.release())));
    }
    return status;
}

platform::AXError AxAccessibility::setAttributeValue(const platform::AXUIElementRef& element,
                                                     std::string_view attribute,
                                                     const std::string& text) {
    AXUIElementRef target = axElement(element);
    const platform::ProcessIdentifier process = processOf(target);
    bool& isRefused = static_cast<AxElement&>(*element).isRefused;
    if (isRefused || isUnresponsive(process)) {
        return platform::axErrorCannotComplete;
    }
    AXError status = settableStatus(target, nsString(attribute));
    if (status == kAXErrorSuccess) {
        AXUIElementSetMessagingTimeout(target, writeTimeout);
        status = AXUIElementSetAttributeValue(target, (__bridge CFStringRef)nsString(attribute),
                                              (__bridge CFStringRef)nsString(text));
        if (status == kAXErrorCannotComplete) {
            unresponsive_[process] =
                [NSRunningApplication runningApplicationWithProcessIdentifier:process];
        }
    }
    isRefused = status != kAXErrorSuccess;
    return status;
}

// The system may have given the identifier of a terminated program to another program.
bool AxAccessibility::isUnresponsive(platform::ProcessIdentifier process) {
    const auto found = unresponsive_.find(process);
    if (found != unresponsive_.end() && found->second.terminated) {
        unresponsive_.erase(found);
        return false;
    }
    return found != unresponsive_.end();
}

bool AxAccessibility::isProcessTrusted() {
    return AXIsProcessTrusted();
}

bool AxAccessibility::isProcessTrustedWithOptions(bool prompt) {
    NSDictionary* options = @{(__bridge NSString*)kAXTrustedCheckOptionPrompt : @(prompt)};
    return AXIsProcessTrustedWithOptions((__bridge CFDictionaryRef)options);
}

}  // namespace tarvik::macdesktop
