// SPDX-License-Identifier: MIT

#include "platform/macos/Conversions.h"

#include <algorithm>
#include <limits>

#include "platform/Alert.h"

namespace tarvik::macdesktop {

namespace {

constexpr double nanosecondsInSecond = 1e9;
// A view with this content hugging or less takes the spare width.
constexpr platform::LayoutPriority lowHugging = 250;

bool isControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return (byte < 0x20 && byte != '\t') || byte == 0x7F;
}

bool isLineBreak(char character) {
    return character == '\n' || character == '\r';
}

}  // namespace

std::int64_t nanoseconds(Seconds delay) {
    constexpr std::int64_t maxCount = std::numeric_limits<std::int64_t>::max();
    const double count = delay.count() * nanosecondsInSecond;
    if (!(count > 0)) {
        return 0;
    }
    // As a double, maxCount is rounded up by one, and that value does not fit into an integer.
    return count < static_cast<double>(maxCount) ? static_cast<std::int64_t>(count) : maxCount;
}

platform::WebSocketMessage::Kind messageKind(std::int64_t messageType) {
    switch (messageType) {
        case dataMessageType:
            return platform::WebSocketMessage::Kind::data;
        case stringMessageType:
            return platform::WebSocketMessage::Kind::string;
        default:
            return platform::WebSocketMessage::Kind::other;
    }
}

bool canStandInHeader(const std::vector<std::pair<std::string, std::string>>& headerFields) {
    return std::none_of(headerFields.begin(), headerFields.end(), [](const auto& field) {
        return std::any_of(field.second.begin(), field.second.end(), isControl);
    });
}

Error errorInOneLine(std::int64_t code, std::string_view localizedDescription) {
    Error error{static_cast<int>(code), {}};
    for (const char character : localizedDescription) {
        if (!isLineBreak(character)) {
            error.localizedDescription.push_back(character);
        } else if (!error.localizedDescription.empty() &&
                   error.localizedDescription.back() != ' ') {
            error.localizedDescription.push_back(' ');
        }
    }
    return error;
}

int alertCode(std::int64_t response, std::size_t buttons) {
    const std::int64_t button = response - platform::alertFirstButtonReturn;
    const bool isButton = button >= 0 && button < static_cast<std::int64_t>(buttons);
    return isButton ? static_cast<int>(response) : 0;
}

bool takesSpareWidth(const platform::ViewLayout& layout) {
    return layout.horizontalContentHugging && *layout.horizontalContentHugging <= lowHugging &&
           !layout.width;
}

platform::LayoutPriority contentHugging(const platform::ViewLayout& layout) {
    return layout.horizontalContentHugging.value_or(lowHugging + 1);
}

}  // namespace tarvik::macdesktop
