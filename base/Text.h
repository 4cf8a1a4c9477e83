#pragma once

#include <string>
#include <string_view>

namespace tarvik {

/// A truth value as log lines show it.
constexpr std::string_view trueOrFalse(bool value) {
    return value ? "true" : "false";
}

/// The UTF-16 code units of a UTF-8 text; each byte that is part of no character becomes U+FFFD.
std::u16string utf16FromUtf8(std::string_view text);

/// `text` (UTF-8) without the white space and line breaks of any script at its ends.
std::string trimmed(std::string_view text);

}  // namespace tarvik
