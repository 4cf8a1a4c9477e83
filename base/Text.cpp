// SPDX-License-Identifier: MIT

#include "base/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tarvik {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

struct Decoded {
    char32_t character = replacementCharacter;
    std::size_t length = 1;
};

constexpr std::string_view ellipsis = "…";

std::uint8_t byteAt(std::string_view text, std::size_t index) {
    return static_cast<std::uint8_t>(text[index]);
}

// As in table 3-7 of the Unicode Standard: overlong forms, surrogates and values beyond U+10FFFF
// are no characters.
Decoded decodeFirst(std::string_view text) {
    const std::uint8_t lead = byteAt(text, 0);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
        return {};
    }
    char32_t character = lead & (0xFF >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const std::uint8_t next = byteAt(text, i);
        if ((next & 0xC0) != 0x80) {
            return {};
        }
        character = character << 6 | (next & 0x3F);
    }
    const bool isOverlong =
        (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    if (isOverlong || isSurrogate || character > 0x10FFFF) {
        return {};
    }
    return {character, length};
}

// The characters with the Unicode property White_Space: text copied from a web page may end with
// more than ASCII blanks.
bool isWhiteSpace(char32_t character) {
    return (character >= 0x09 && character <= 0x0D) || character == 0x20 || character == 0x85 ||
           character == 0xA0 || character == 0x1680 ||
           (character >= 0x2000 && character <= 0x200A) || character == 0x2028 ||
           character == 0x2029 || character == 0x202F || character == 0x205F || character == 0x3000;
}

// A soft hyphen, joiners, marks of the writing direction, invisible operators, byte order marks.
bool isInvisibleFormat(char32_t character) {
    return character == 0xAD || character == 0x61C || character == 0x180E ||
           (character >= 0x200B && character <= 0x200F) ||
           (character >= 0x202A && character <= 0x202E) ||
           (character >= 0x2060 && character <= 0x206F) || character == 0xFEFF;
}

}  // namespace

std::u16string utf16FromUtf8(std::string_view text) {
    std::u16string units;
    units.reserve(text.size());
    while (!text.empty()) {
        const Decoded decoded = decodeFirst(text);
        if (decoded.character < 0x10000) {
            units.push_back(static_cast<char16_t>(decoded.character));
        } else {
            const char32_t offset = decoded.character - 0x10000;
            units.push_back(static_cast<char16_t>(0xD800 + (offset >> 10)));
            units.push_back(static_cast<char16_t>(0xDC00 + (offset & 0x3FF)));
        }
        text.remove_prefix(decoded.length);
    }
    return units;
}

std::string utf8FromUtf32(std::u32string_view characters) {
    std::string text;
    const auto append = [&text](char32_t byte) {
        text += static_cast<char>(static_cast<unsigned char>(byte));
    };
    for (const char32_t character : characters) {
        const auto appendFollowing = [&](int shift) { append(0x80 | (character >> shift & 0x3F)); };
        if (character < 0x80) {
            append(character);
        } else if (character < 0x800) {
            append(0xC0 | character >> 6);
            appendFollowing(0);
        } else if (character < 0x10000) {
            append(0xE0 | character >> 12);
            appendFollowing(6);
            appendFollowing(0);
        } else {
            append(0xF0 | character >> 18);
            appendFollowing(12);
            appendFollowing(6);
            appendFollowing(0);
        }
    }
    return text;
}

std::string shortened(std::string_view text, std::size_t maxCharacters) {
    std::size_t cut = 0;
    std::size_t index = 0;
    for (std::size_t count = 0; index < text.size() && count < maxCharacters; ++count) {
        cut = index;
        index += decodeFirst(text.substr(index)).length;
    }
    return index == text.size() ? std::string(text)
                                : std::string(text.substr(0, cut)).append(ellipsis);
}

std::string trimmed(std::string_view text) {
    std::size_t begin = text.size();
    std::size_t end = text.size();
    for (std::size_t index = 0; index < text.size();) {
        const Decoded decoded = decodeFirst(text.substr(index));
        if (!isWhiteSpace(decoded.character) && !isInvisibleFormat(decoded.character)) {
            begin = std::min(begin, index);
            end = index + decoded.length;
        }
        index += decoded.length;
    }
    return std::string(text.substr(begin, end - begin));
}

}  // namespace tarvik
