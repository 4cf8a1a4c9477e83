// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "base/Text.h"

namespace tarvik {
namespace {

constexpr char32_t lastCharacter = 0x10FFFF;

bool isSurrogate(char32_t character) {
    return character >= 0xD800 && character <= 0xDFFF;
}

std::string utf8(char32_t character) {
    const auto unit = [](char32_t bits) { return static_cast<char>(bits); };
    const auto next = [&](int shift) { return unit(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        return {unit(character)};
    }
    if (character < 0x800) {
        return {unit(0xC0 | character >> 6), next(0)};
    }
    if (character < 0x10000) {
        return {unit(0xE0 | character >> 12), next(6), next(0)};
    }
    return {unit(0xF0 | character >> 18), next(12), next(6), next(0)};
}

std::u16string utf16(char32_t character) {
    if (character < 0x10000) {
        return {static_cast<char16_t>(character)};
    }
    return {static_cast<char16_t>(0xD7C0 + (character >> 10)),
            static_cast<char16_t>(0xDC00 | (character & 0x3FF))};
}

TEST(Utf16, OfPlainTextHasOneUnitPerCharacter) {
    EXPECT_EQ(utf16FromUtf8(""), u"");
    EXPECT_EQ(utf16FromUtf8("hello"), u"hello");
    EXPECT_EQ(utf16FromUtf8("Жñ漢"), u"Жñ漢");
    EXPECT_EQ(utf16FromUtf8(std::string_view("a\0b", 3)), std::u16string(u"a\0b", 3));
}

TEST(Utf16, OfACharacterOutsideTheFirstPlaneIsASurrogatePair) {
    EXPECT_EQ(utf16FromUtf8("\xF0\x9F\x98\x80"), (std::u16string{0xD83D, 0xDE00}));
    EXPECT_EQ(utf16FromUtf8("\xF0\x90\x80\x80"), (std::u16string{0xD800, 0xDC00}));
    EXPECT_EQ(utf16FromUtf8("\xF4\x8F\xBF\xBF"), (std::u16string{0xDBFF, 0xDFFF}));
}

TEST(Utf16, IsExactAtTheLimitsOfEachLength) {
    EXPECT_EQ(utf16FromUtf8("\x7F\xC2\x80\xDF\xBF"), (std::u16string{0x7F, 0x80, 0x7FF}));
    EXPECT_EQ(utf16FromUtf8("\xE0\xA0\x80\xEF\xBF\xBF"), (std::u16string{0x800, 0xFFFF}));
    EXPECT_EQ(utf16FromUtf8("\xED\x9F\xBF\xEE\x80\x80"), (std::u16string{0xD7FF, 0xE000}));
}

TEST(Utf16, IsExactForCharactersOfEveryPlane) {
    constexpr char32_t stride = 61;
    for (char32_t character = 0; character <= lastCharacter; character += stride) {
        if (!isSurrogate(character)) {
            ASSERT_EQ(utf16FromUtf8(utf8(character)), utf16(character)) << std::uint32_t{character};
        }
    }
}

TEST(Utf8, IsExactAtTheLimitsOfEachLength) {
    EXPECT_EQ(utf8FromUtf32(U""), "");
    EXPECT_EQ(utf8FromUtf32({U"\0\x7F", 2}), std::string_view("\0\x7F", 2));
    EXPECT_EQ(utf8FromUtf32(U"\x80\x7FF"), "\xC2\x80\xDF\xBF");
    EXPECT_EQ(utf8FromUtf32(U"\x800\xD7FF\xE000\xFFFF"),
              "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF");
    EXPECT_EQ(utf8FromUtf32(U"\x10000\x10FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(Utf8, IsExactForCharactersOfEveryPlane) {
    constexpr char32_t stride = 61;
    for (char32_t character = 0; character <= lastCharacter; character += stride) {
        ASSERT_EQ(utf8FromUtf32({&character, 1}), utf8(character)) << std::uint32_t{character};
    }
}

TEST(Utf16, OfASurrogateIsOneReplacementCharacterPerByte) {
    for (char32_t character = 0xD800; character <= 0xDFFF; ++character) {
        ASSERT_EQ(utf16FromUtf8(utf8(character)), std::u16string(3, 0xFFFD));
    }
}

TEST(Utf16, HasOneReplacementCharacterPerInvalidByte) {
    const char16_t none = 0xFFFD;
    EXPECT_EQ(utf16FromUtf8("\xFF"), std::u16string(1, none));
    EXPECT_EQ(utf16FromUtf8("a\x80z"), (std::u16string{u'a', none, u'z'}));
    EXPECT_EQ(utf16FromUtf8("\xC0\x80"), std::u16string(2, none));          // overlong
    EXPECT_EQ(utf16FromUtf8("\xE0\x80\x80"), std::u16string(3, none));      // overlong
    EXPECT_EQ(utf16FromUtf8("\xED\xA0\x80"), std::u16string(3, none));      // a surrogate
    EXPECT_EQ(utf16FromUtf8("\xF4\x90\x80\x80"), std::u16string(4, none));  // past the last plane
    EXPECT_EQ(utf16FromUtf8("a\xF0\x9F\x98"), (std::u16string{u'a', none, none, none}));
    EXPECT_EQ(utf16FromUtf8("\xC3("), (std::u16string{none, u'('}));
    EXPECT_EQ(utf16FromUtf8("\xC3"), std::u16string(1, none));
    EXPECT_EQ(utf16FromUtf8("\xC1\xBF"), std::u16string(2, none));          // overlong
    EXPECT_EQ(utf16FromUtf8("\xE0\x9F\xBF"), std::u16string(3, none));      // overlong
    EXPECT_EQ(utf16FromUtf8("\xF0\x8F\xBF\xBF"), std::u16string(4, none));  // overlong
    EXPECT_EQ(utf16FromUtf8("\xF5\x80\x80\x80"), std::u16string(4, none));  // past the last plane
    EXPECT_EQ(utf16FromUtf8("\xF8\x90\x80\x80"), std::u16string(4, none));  // five bytes in all
}

TEST(Utf16, DoesNotReadPastTheEndOfTheText) {
    const std::string_view text = "é漢😀";
    EXPECT_EQ(utf16FromUtf8(text.substr(0, 1)), std::u16string(1, 0xFFFD));
    EXPECT_EQ(utf16FromUtf8(text.substr(2, 2)), std::u16string(2, 0xFFFD));
    EXPECT_EQ(utf16FromUtf8(text.substr(5, 3)), std::u16string(3, 0xFFFD));
}

TEST(Shortening, CutsBetweenCharactersAndSaysSo) {
    EXPECT_EQ(shortened("", 3), "");
    EXPECT_EQ(shortened("", 0), "");
    EXPECT_EQ(shortened("abc", 0), "…");
    EXPECT_EQ(shortened("abc", 1), "…");
    EXPECT_EQ(shortened("abc", 3), "abc");
    EXPECT_EQ(shortened("abcd", 3), "ab…");
    EXPECT_EQ(shortened("ключ", 4), "ключ");
    EXPECT_EQ(shortened("ключи", 4), "клю…");
    EXPECT_EQ(shortened("\xFF\xFE\xFF", 2), "\xFF…");
}

TEST(Trimming, RemovesWhiteSpaceFromTheEndsOnly) {
    EXPECT_EQ(trimmed("  a b\r\n"), "a b");
    EXPECT_EQ(trimmed("\t\n\v\f\r a\t"), "a");
    EXPECT_EQ(trimmed("a"), "a");
    EXPECT_EQ(trimmed(" \r\n\t "), "");
    EXPECT_EQ(trimmed(""), "");
}

TEST(Trimming, RemovesAllUnicodeWhiteSpace) {
    // A no-break space, an em space and the ideographic space; a line and a paragraph separator.
    EXPECT_EQ(trimmed("\u00A0\u2003ключ é\u3000\u2028\u2029"), "ключ é");
    EXPECT_EQ(trimmed("\u00A0\u1680\u2000\u200A\u202F\u205F\u0085"), "");
}

TEST(Trimming, RemovesFormatCharactersOfNoWidth) {
    // A zero-width space, a byte order mark, a word joiner, marks of direction, a soft hyphen.
    EXPECT_EQ(trimmed("\u200Bkey\u200B\r\n"), "key");
    EXPECT_EQ(trimmed("\uFEFF\u2060 \u202Ake\u200By\u202C\u200E\u2066\u2069"), "ke\u200By");
    EXPECT_EQ(trimmed("\u00AD\u061C\u180E\u200C\u200D"), "");
}

TEST(Trimming, RemovesTheseCharactersAndNoOther) {
    constexpr std::pair<char32_t, char32_t> removed[] = {
        {0x09, 0x0D},     {0x20, 0x20},     {0x85, 0x85},     {0xA0, 0xA0},     {0xAD, 0xAD},
        {0x61C, 0x61C},   {0x1680, 0x1680}, {0x180E, 0x180E}, {0x2000, 0x200F}, {0x2028, 0x202F},
        {0x205F, 0x206F}, {0x3000, 0x3000}, {0xFEFF, 0xFEFF}};
    for (char32_t character = 1; character < 0x10000; ++character) {
        bool isRemoved = false;
        for (const auto& [first, last] : removed) {
            isRemoved = isRemoved || (character >= first && character <= last);
        }
        const std::string text = utf8(character);
        ASSERT_EQ(trimmed(text), isRemoved ? "" : text) << std::uint32_t{character};
    }
}

TEST(Trimming, KeepsInvalidBytes) {
    EXPECT_EQ(trimmed(" \xA0 "), "\xA0");
}

}  // namespace
}  // namespace tarvik
