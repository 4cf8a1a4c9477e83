// SPDX-License-Identifier: MIT

#include "fuzz/FrameReader.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tarvik::fuzz {

namespace {

struct Frame {
    bool isFinal = false;
    unsigned opcode = 0;
    std::string_view payload;
};

std::uint64_t numberIn(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

// Takes the first frame; empty when it is not allowed, or not whole.
std::optional<Frame> takeFrame(std::string_view& bytes) {
    if (bytes.size() < 2) {
        return std::nullopt;
    }
    const auto first = static_cast<unsigned char>(bytes[0]);
    const auto second = static_cast<unsigned char>(bytes[1]);
    const bool isControl = (first & 0x08) != 0;
    const bool isReserved = (first & 0x70) != 0 || (first & 0x07) > 2;
    const bool isMasked = (second & 0x80) != 0;
    const bool isFinal = (first & 0x80) != 0;
    std::uint64_t length = second & 0x7F;
    if (isReserved || isMasked || (isControl && (!isFinal || length > 125))) {
        return std::nullopt;
    }
    std::size_t start = 2;
    if (length >= 126) {
        const std::size_t size = length == 126 ? 2 : 8;
        if (bytes.size() < start + size) {
            return std::nullopt;
        }
        const std::uint64_t min = length == 126 ? 126 : 0x10000;
        length = numberIn(bytes.substr(start, size));
        start += size;
        if (length < min || length >> 63 != 0) {
            return std::nullopt;
        }
    }
    if (bytes.size() - start < length) {
        return std::nullopt;
    }
    const Frame frame{isFinal, first & 0x0FU,
                      bytes.substr(start, static_cast<std::size_t>(length))};
    bytes.remove_prefix(start + static_cast<std::size_t>(length));
    return frame;
}

}  // namespace

std::vector<std::string> messagesIn(std::string_view bytes) {
    constexpr unsigned continuation = 0;
    constexpr unsigned close = 8;
    std::vector<std::string> messages;
    std::optional<std::string> begun;
    while (const auto frame = takeFrame(bytes)) {
        if (frame->opcode == close) {
            break;
        }
        if (frame->opcode > close) {
            continue;
        }
        if ((frame->opcode == continuation) != begun.has_value()) {
            break;
        }
        begun = begun.value_or("").append(frame->payload);
        if (frame->isFinal) {
            messages.push_back(*begun);
            begun.reset();
        }
    }
    return messages;
}

}  // namespace tarvik::fuzz
