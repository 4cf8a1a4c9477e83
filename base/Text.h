// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarvik {

/// The text of a truth value in log lines.
constexpr std::string_view trueOrFalse(bool value) {
    return value ? "true" : "false";
}

/// Converts UTF-8 to UTF-16 code units. Each byte that is part of no character becomes U+FFFD.
std::u16string utf16FromUtf8(std::string_view text);

/// Converts characters, none of them a surrogate, to UTF-8.
std::string utf8FromUtf32(std::u32string_view characters);

/// `text` (UTF-8) with at most `maxCharacters` characters. An ellipsis takes the place of what was
/// cut off.
std::string shortened(std::string_view text, std::size_t maxCharacters);

/// `text` (UTF-8) without leading and trailing white space. White space is every character with the
/// Unicode property White_Space, line breaks included, and every format character of no width: a
/// copied text may begin or end with characters that nobody sees.
std::string trimmed(std::string_view text);

}  // namespace tarvik
