// SPDX-License-Identifier: MIT
#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"

// Copies of texts, data and errors across the border of the languages. Any thread.
namespace tarvik::macdesktop {

/// The same text; each byte that is not part of a UTF-8 character becomes U+FFFD.
NSString* nsString(std::string_view utf8);
NSArray<NSString*>* nsStrings(const std::vector<std::string>& texts);

/// The same text in UTF-8; empty for nil.
std::string utf8(NSString* text);

NSData* nsData(std::string_view bytes);
std::string bytes(NSData* data);

/// The error that a call has reported, in one line; code 0 and no description for nil.
Error errorFrom(NSError* error);

}  // namespace tarvik::macdesktop
