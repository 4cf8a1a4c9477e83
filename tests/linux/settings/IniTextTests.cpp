// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "platform/linux/settings/IniDocument.h"
#include "platform/linux/settings/IniEncoding.h"

namespace tarvik::tests {

namespace {

class IniKey : public testing::TestWithParam<const char*> {};

TEST_P(IniKey, ComesBack) {
    EXPECT_EQ(linuxdesktop::decodeIniKey(linuxdesktop::encodeIniKey(GetParam())), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Keys, IniKey,
                         testing::Values("deepgramApiKey", "a/b", "a%20b", "ключ", "😀", "",
                                         "\xEF\xBB\xBF"
                                         "after a byte order mark"));

TEST(IniValue, DropsAnUnknownEscapeWhole) {
    EXPECT_EQ(linuxdesktop::decodeIniValue("a\\\xEF\xBB\xBFz"), "az");
    EXPECT_EQ(linuxdesktop::decodeIniValue("a\\qz"), "az");
}

TEST(IniDocument, RefusesACharacterThatIsCutAtTheEnd) {
    EXPECT_FALSE(linuxdesktop::IniDocument::parse("[General]\nkey=cut \xD8"));
    EXPECT_TRUE(linuxdesktop::IniDocument::parse("[General]\nkey=whole \xD8\xA7"));
}

// A reader takes a byte order mark at the beginning for the file's own.
TEST(IniDocument, KeepsALineWithAByteOrderMarkThatBecomesTheFirst) {
    auto document =
        linuxdesktop::IniDocument::parse("first=1\n\xEF\xBB\xBF=without a name\nsecond=2\n")
            .value();
    document.set("first", std::nullopt);
    const auto reread = linuxdesktop::IniDocument::parse(document.content());
    ASSERT_TRUE(reread);
    EXPECT_EQ(reread.value().value("second"), "2");
    EXPECT_EQ(reread.value().content(), document.content());
}

}  // namespace

}  // namespace tarvik::tests
