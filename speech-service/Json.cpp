// SPDX-License-Identifier: MIT

#include "speech-service/Json.h"

#include <array>
#include <charconv>
#include <cmath>

#include "base/Text.h"

namespace tarvik::service {

std::string jsonString(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string json = "\"";
    for (const char16_t unit : utf16FromUtf8(text)) {
        if (unit == u'"' || unit == u'\\') {
            json += '\\';
        }
        if (unit >= 0x20 && unit < 0x7F) {
            json += static_cast<char>(unit);
        } else {
            json += "\\u";
            for (const int shift : {12, 8, 4, 0}) {
                json += digits[unit >> shift & 0xF];
            }
        }
    }
    return json + '"';
}

std::string jsonNumber(double number) {
    std::array<char, 64> text{};
    const double rounded = std::round(number * 1000) / 1000;
    const auto [end, status] = std::to_chars(text.data(), text.data() + text.size(), rounded);
    return status == std::errc() ? std::string(text.data(), end) : "0";
}

}  // namespace tarvik::service
