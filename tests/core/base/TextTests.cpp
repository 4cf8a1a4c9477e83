// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "base/Text.h"

namespace tarvik {
namespace {

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
}

TEST(Shortening, CutsBetweenCharactersAndSaysSo) {
    EXPECT_EQ(shortened("", 3), "");
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

TEST(Trimming, KeepsInvalidBytes) {
    EXPECT_EQ(trimmed(" \xA0 "), "\xA0");
}

}  // namespace
}  // namespace tarvik
