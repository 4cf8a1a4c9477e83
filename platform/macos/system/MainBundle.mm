// SPDX-License-Identifier: MIT

#import "platform/macos/system/MainBundle.h"

#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

std::optional<std::string> MainBundle::objectForInfoDictionaryKey(std::string_view key) const {
    const id object = [NSBundle.mainBundle objectForInfoDictionaryKey:nsString(key)];
    return [object isKindOfClass:[NSString class]] ? std::optional(utf8(object)) : std::nullopt;
}

std::string MainBundle::bundlePath() const {
    return utf8(NSBundle.mainBundle.bundlePath);
}

std::string MainBundle::openCommand() const {
    return "/usr/bin/open -n";
}

}  // namespace tarvik::macdesktop
