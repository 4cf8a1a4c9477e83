// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/LogText.h"

#include <simdjson.h>

#include <algorithm>

#include "base/Text.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr std::size_t maxCharacters = 500;

bool isControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F;
}

}  // namespace

std::string logText(std::string_view text) {
    std::string line;
    for (const char character : text) {
        // Indented JSON has runs of blanks.
        const bool isBlank = isControl(character) || character == ' ';
        if (!isBlank) {
            line.push_back(character);
        } else if (!line.empty() && line.back() != ' ') {
            line.push_back(' ');
        }
    }
    if (!isUtf8(line)) {
        std::replace_if(
            line.begin(), line.end(),
            [](char character) { return static_cast<unsigned char>(character) >= 0x80; }, '?');
    }
    return shortened(trimmed(line), maxCharacters);
}

std::string httpStatusText(unsigned status, std::string_view reason) {
    return trimmed("HTTP " + std::to_string(status) + " " + logText(reason));
}

bool isUtf8(std::string_view text) {
    return simdjson::validate_utf8(text.data(), text.size());
}

}  // namespace tarvik::linuxdesktop
