#include "speech-service/Json.h"

#include <array>
#include <charconv>
#include <cmath>

namespace tarvik::service {

std::string jsonString(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string json = "\"";
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            json += '\\';
            json += character;
        } else if (code < 0x20) {
            json += "\\u00";
            json += digits[code >> 4];
            json += digits[code & 0xF];
        } else {
            json += character;
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
