#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"

// Texts and failures across the border: each side gets a copy of its own.
namespace tarvik::macdesktop {

/// The same text; each byte that is part of no character becomes U+FFFD.
NSString* nsString(std::string_view utf8);
NSArray<NSString*>* nsStrings(const std::vector<std::string>& texts);

/// The same text in UTF-8; nil is the empty text.
std::string utf8(NSString* text);

NSData* nsData(std::string_view bytes);
std::string bytes(NSData* data);

/// The failure that a call has reported; one that it has not described has code 0.
Error errorFrom(NSError* error);

}  // namespace tarvik::macdesktop
