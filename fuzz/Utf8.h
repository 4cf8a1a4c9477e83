// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarvik::fuzz {

/// Whether `text` is UTF-8 from its first to its last byte. Shares no code with base/Text.h.
inline bool isUtf8(std::string_view text) {
    std::size_t at = 0;
    const auto byte = [&](std::size_t index) -> unsigned {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0;
    };
    while (at < text.size()) {
        const unsigned lead = byte(at);
        const unsigned second = byte(at + 1);
        const std::size_t length = lead < 0x80                    ? 1
                                   : lead >= 0xC2 && lead <= 0xDF ? 2
                                   : lead >= 0xE0 && lead <= 0xEF ? 3
                                   : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                                  : 0;
        if (length == 0 || (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
            (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F)) {
            return false;
        }
        for (std::size_t index = 1; index < length; ++index) {
            if (byte(at + index) < 0x80 || byte(at + index) > 0xBF) {
                return false;
            }
        }
        at += length;
    }
    return true;
}

}  // namespace tarvik::fuzz
