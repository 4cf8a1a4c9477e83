// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaLabel.h"

#import "platform/macos/Strings.h"
#import "platform/macos/windows/CocoaAppearance.h"

namespace tarvik::macdesktop {

namespace {

// NSTextAlignmentCenter has another number on each processor, so the declarations of the type check
// leave it out.
#if defined(__arm64__)
constexpr auto centered = static_cast<NSTextAlignment>(1);
#else
constexpr auto centered = static_cast<NSTextAlignment>(2);
#endif
#ifdef __APPLE__
static_assert(centered == NSTextAlignmentCenter);
#endif

NSTextField* makeField(const platform::LabelDescription& description) {
    NSString* text = nsString(description.text);
    if (description.wrapping == platform::LabelWrapping::always) {
        return [NSTextField wrappingLabelWithString:text];
    }
    NSTextField* field = [NSTextField labelWithString:text];
    if (description.wrapping == platform::LabelWrapping::whenNarrow) {
        [field setUsesSingleLineMode:NO];
        [field setLineBreakMode:NSLineBreakByWordWrapping];
    }
    return field;
}

}  // namespace

CocoaLabel::CocoaLabel(const platform::LabelDescription& description)
    : CocoaLabel(makeField(description), description) {}

CocoaLabel::CocoaLabel(NSTextField* field, const platform::LabelDescription& description)
    : CocoaView(field, description.layout), field_(field) {
    [field setFont:nsFont(description.font)];
    [field setTextColor:nsColor(description.color)];
    if (description.alignment == platform::TextAlignment::center) {
        [field setAlignment:centered];
    }
    if (description.preferredMaxLayoutWidth) {
        [field setPreferredMaxLayoutWidth:*description.preferredMaxLayoutWidth];
    }
}

void CocoaLabel::setText(const std::string& text) {
    [field_ setStringValue:nsString(text)];
}

void CocoaLabel::setTextColor(platform::Color color) {
    [field_ setTextColor:nsColor(color)];
}

}  // namespace tarvik::macdesktop
