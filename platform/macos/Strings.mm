// SPDX-License-Identifier: MIT

#import "platform/macos/Strings.h"

#include "base/Text.h"
#include "platform/macos/Conversions.h"

namespace tarvik::macdesktop {

NSString* nsString(std::string_view utf8) {
    const std::u16string units = utf16FromUtf8(utf8);
    return [[NSString alloc] initWithCharacters:reinterpret_cast<const unichar*>(units.data())
                                         length:units.size()];
}

NSArray<NSString*>* nsStrings(const std::vector<std::string>& texts) {
    NSMutableArray<NSString*>* strings = [NSMutableArray arrayWithCapacity:texts.size()];
    for (const std::string& text : texts) {
        [strings addObject:nsString(text)];
    }
    return strings;
}

// Through NSData, because a text may hold a null character or half a surrogate pair.
std::string utf8(NSString* text) {
    return bytes([text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES]);
}

NSData* nsData(std::string_view bytes) {
    return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}

std::string bytes(NSData* data) {
    return data.length > 0 ? std::string(static_cast<const char*>(data.bytes), data.length)
                           : std::string();
}

Error errorFrom(NSError* error) {
    return errorInOneLine(error.code, utf8(error.localizedDescription));
}

}  // namespace tarvik::macdesktop
