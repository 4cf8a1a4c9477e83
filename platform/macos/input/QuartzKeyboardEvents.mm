// SPDX-License-Identifier: MIT

#import "platform/macos/input/QuartzKeyboardEvents.h"

#import <CoreGraphics/CoreGraphics.h>

#include <utility>

#import "platform/macos/CFHandle.h"

namespace tarvik::macdesktop {

namespace {

struct QuartzEventSource final : platform::EventSource {
    explicit QuartzEventSource(CFHandle<CGEventSourceRef> created) : source(std::move(created)) {}

    CFHandle<CGEventSourceRef> source;
};

struct QuartzKeyboardEvent final : platform::KeyboardEvent {
    explicit QuartzKeyboardEvent(CFHandle<CGEventRef> created) : event(std::move(created)) {}

    CFHandle<CGEventRef> event;
};

CGEventRef quartzEvent(platform::KeyboardEvent& event) {
    return static_cast<QuartzKeyboardEvent&>(event).event.get();
}

}  // namespace

std::shared_ptr<platform::EventSource> QuartzKeyboardEvents::createSource(int sourceState) {
    CFHandle<CGEventSourceRef> source(
        CGEventSourceCreate(static_cast<CGEventSourceStateID>(sourceState)));
    return source ? std::make_shared<QuartzEventSource>(std::move(source)) : nullptr;
}

std::shared_ptr<platform::KeyboardEvent> QuartzKeyboardEvents::createKeyboardEvent(
    const std::shared_ptr<platform::EventSource>& source, std::uint16_t virtualKey, bool keyDown) {
    const auto* quartzSource = static_cast<QuartzEventSource*>(source.get());
    CFHandle<CGEventRef> event(CGEventCreateKeyboardEvent(
        quartzSource != nullptr ? quartzSource->source.get() : nullptr, virtualKey, keyDown));
    if (!event) {
        return nullptr;
    }
    // The user may still hold the Option key of the hotkey. Some programs would take text with that
    // flag for a shortcut.
    CGEventSetFlags(event.get(), 0);
    return std::make_shared<QuartzKeyboardEvent>(std::move(event));
}

void QuartzKeyboardEvents::setUnicodeString(platform::KeyboardEvent& event,
                                            std::u16string_view units) {
    CGEventKeyboardSetUnicodeString(quartzEvent(event), units.size(),
                                    reinterpret_cast<const UniChar*>(units.data()));
}

void QuartzKeyboardEvents::postToPid(platform::ProcessIdentifier processIdentifier,
                                     const std::shared_ptr<platform::KeyboardEvent>& event) {
    CGEventPostToPid(processIdentifier, quartzEvent(*event));
}

void QuartzKeyboardEvents::post(int tap, const std::shared_ptr<platform::KeyboardEvent>& event) {
    CGEventPost(static_cast<CGEventTapLocation>(tap), quartzEvent(*event));
}

}  // namespace tarvik::macdesktop
