// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

// How a text that was read relates to one that was written, both UTF-8. Any thread.
namespace tarvik::linuxdesktop {

/// As much of `text` as `found` begins with, in whole characters.
std::string commonPrefix(const std::string& text, const std::string& found);

/// Whether `text` is less than all of `whole`, without its end. The cut may have split a character,
/// which reads as a replacement character.
bool isCutFrom(std::string_view text, std::string_view whole);

}  // namespace tarvik::linuxdesktop
