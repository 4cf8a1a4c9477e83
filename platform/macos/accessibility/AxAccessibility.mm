#import "platform/macos/accessibility/AxAccessibility.h"

#import <ApplicationServices/ApplicationServices.h>

#include <utility>

#import "platform/macos/CFHandle.h"
#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

namespace {

// Of the element that stands for all, it is the limit for every other.
constexpr float longestWait = 0.5F;

struct AxElement final : platform::AXUIElement {
    explicit AxElement(CFHandle<AXUIElementRef> owned) : reference(std::move(owned)) {}

    CFHandle<AXUIElementRef> reference;
};

AXUIElementRef axElement(const platform::AXUIElementRef& element) {
    return static_cast<const AxElement&>(*element).reference.get();
}

// 0, which is no program's, when the element does not say.
platform::ProcessIdentifier processOf(AXUIElementRef element) {
    pid_t process = 0;
    return AXUIElementGetPid(element, &process) == kAXErrorSuccess ? process : 0;
}

}  // namespace

platform::AXUIElementRef AxAccessibility::createSystemWide() {
    CFHandle<AXUIElementRef> element(AXUIElementCreateSystemWide());
    AXUIElementSetMessagingTimeout(element.get(), longestWait);
    return std::make_shared<AxElement>(std::move(element));
}

platform::AXError AxAccessibility::copyAttributeValue(const platform::AXUIElementRef& element,
                                                      std::string_view attribute,
                                                      platform::AXUIElementRef* outValue) {
    CFTypeRef copied = nullptr;
    const AXError status = AXUIElementCopyAttributeValue(
        axElement(element), (__bridge CFStringRef)nsString(attribute), &copied);
    // Taken over whatever the status, so that it is released whatever it is.
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
    const platform::ProcessIdentifier process = processOf(axElement(element));
    if (hasFailedToAnswer(process)) {
        return platform::axErrorCannotComplete;
    }
    const AXError status =
        AXUIElementSetAttributeValue(axElement(element), (__bridge CFStringRef)nsString(attribute),
                                     (__bridge CFStringRef)nsString(text));
    if (status == kAXErrorCannotComplete) {
        silent_[process] = [NSRunningApplication runningApplicationWithProcessIdentifier:process];
    }
    return status;
}

// Its identifier may be another program's by now.
bool AxAccessibility::hasFailedToAnswer(platform::ProcessIdentifier process) {
    const auto found = silent_.find(process);
    if (found != silent_.end() && found->second.terminated) {
        silent_.erase(found);
        return false;
    }
    return found != silent_.end();
}

bool AxAccessibility::isProcessTrusted() {
    return AXIsProcessTrusted();
}

bool AxAccessibility::isProcessTrustedWithOptions(bool prompt) {
    NSDictionary* options = @{(__bridge NSString*)kAXTrustedCheckOptionPrompt : @(prompt)};
    return AXIsProcessTrustedWithOptions((__bridge CFDictionaryRef)options);
}

}  // namespace tarvik::macdesktop
