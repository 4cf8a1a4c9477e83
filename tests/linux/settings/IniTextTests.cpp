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

}  // namespace

}  // namespace tarvik::tests
