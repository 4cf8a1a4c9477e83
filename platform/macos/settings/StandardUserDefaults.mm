// SPDX-License-Identifier: MIT

#import "platform/macos/settings/StandardUserDefaults.h"

#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

StandardUserDefaults::StandardUserDefaults() : defaults_(NSUserDefaults.standardUserDefaults) {}

std::optional<std::string> StandardUserDefaults::stringForKey(std::string_view key) const {
    NSString* text = [defaults_ stringForKey:nsString(key)];
    return text != nil ? std::optional(utf8(text)) : std::nullopt;
}

std::int64_t StandardUserDefaults::integerForKey(std::string_view key) const {
    return [defaults_ integerForKey:nsString(key)];
}

bool StandardUserDefaults::boolForKey(std::string_view key) const {
    return [defaults_ boolForKey:nsString(key)];
}

bool StandardUserDefaults::hasObjectForKey(std::string_view key) const {
    return [defaults_ objectForKey:nsString(key)] != nil;
}

void StandardUserDefaults::setString(std::string_view value, std::string_view key) {
    [defaults_ setObject:nsString(value) forKey:nsString(key)];
}

void StandardUserDefaults::setInteger(std::int64_t value, std::string_view key) {
    [defaults_ setInteger:value forKey:nsString(key)];
}

void StandardUserDefaults::setBool(bool value, std::string_view key) {
    [defaults_ setBool:value forKey:nsString(key)];
}

void StandardUserDefaults::removeObjectForKey(std::string_view key) {
    [defaults_ removeObjectForKey:nsString(key)];
}

}  // namespace tarvik::macdesktop
