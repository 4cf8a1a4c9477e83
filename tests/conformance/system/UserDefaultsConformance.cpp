// SPDX-License-Identifier: MIT

#include <cstdint>
#include <limits>
#include <string>
#include <thread>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

using UserDefaultsConformance = SystemConformance;

TEST_P(UserDefaultsConformance, AnAbsentKeyReadsAsNothing) {
    EXPECT_EQ(world->userDefaults().stringForKey("deepgramApiKey"), std::nullopt);
    EXPECT_EQ(world->userDefaults().integerForKey("totalDictationSeconds"), 0);
    EXPECT_FALSE(world->userDefaults().boolForKey("ctaTenMinuteShown"));
}

TEST_P(UserDefaultsConformance, TextSurvivesARoundTripThroughTheNextRun) {
    const std::string texts[] = {"plain",
                                 "",
                                 "  blanks at both ends \t",
                                 "a \"quoted\" word",
                                 "back\\slash \\x41 \\n",
                                 "one, two; three = four # five",
                                 "100 % %41 %U0041",
                                 "Zażółć 日本語 😀",
                                 "line\nbreak\r\nand\ttab",
                                 "\x01\x7f",
                                 "\x05"
                                 "abc",
                                 "@at",
                                 "@@at",
                                 "@Variant(x)",
                                 "@ByteArray(x)",
                                 "[General]",
                                 "true",
                                 "42",
                                 "'"};
    int number = 0;
    for (const std::string& text : texts) {
        const std::string key = "text" + std::to_string(number++);
        world->userDefaults().setString(text, key);
        EXPECT_EQ(world->userDefaults().stringForKey(key), text);
    }
    world->reopenUserDefaults();
    number = 0;
    for (const std::string& text : texts) {
        EXPECT_EQ(world->userDefaults().stringForKey("text" + std::to_string(number++)), text);
    }
}

TEST_P(UserDefaultsConformance, NumbersAndTruthValuesAreThereInTheNextRun) {
    world->userDefaults().setInteger(std::numeric_limits<std::int64_t>::max(), "most");
    world->userDefaults().setInteger(std::numeric_limits<std::int64_t>::min(), "least");
    world->userDefaults().setBool(true, "yes");
    world->userDefaults().setBool(false, "no");
    world->reopenUserDefaults();
    EXPECT_EQ(world->userDefaults().integerForKey("most"),
              std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(world->userDefaults().integerForKey("least"),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_TRUE(world->userDefaults().boolForKey("yes"));
    EXPECT_FALSE(world->userDefaults().boolForKey("no"));
}

TEST_P(UserDefaultsConformance, AValueOfTheWrongTypeReadsAsAbsent) {
    const auto check = [this] {
        EXPECT_EQ(world->userDefaults().integerForKey("text"), 0);
        EXPECT_FALSE(world->userDefaults().boolForKey("text"));
        EXPECT_EQ(world->userDefaults().integerForKey("digits"), 0);
        EXPECT_FALSE(world->userDefaults().boolForKey("word"));
        EXPECT_FALSE(world->userDefaults().boolForKey("one"));
        EXPECT_EQ(world->userDefaults().integerForKey("yes"), 0);
    };
    world->userDefaults().setString("some text", "text");
    world->userDefaults().setString("42", "digits");
    world->userDefaults().setString("true", "word");
    world->userDefaults().setInteger(1, "one");
    world->userDefaults().setBool(true, "yes");
    check();
    world->reopenUserDefaults();
    check();
}

TEST_P(UserDefaultsConformance, ANumberAndATruthValueReadAsTextToo) {
    world->userDefaults().setInteger(-42, "number");
    world->userDefaults().setBool(true, "yes");
    EXPECT_EQ(world->userDefaults().stringForKey("number"), "-42");
    EXPECT_EQ(world->userDefaults().stringForKey("yes"), "true");
}

TEST_P(UserDefaultsConformance, ALaterValueReplacesAnEarlierOneOfAnyType) {
    world->userDefaults().setString("text", "key");
    world->userDefaults().setInteger(5, "key");
    EXPECT_EQ(world->userDefaults().integerForKey("key"), 5);
    world->userDefaults().setInteger(6, "key");
    world->reopenUserDefaults();
    EXPECT_EQ(world->userDefaults().integerForKey("key"), 6);
}

TEST_P(UserDefaultsConformance, ARemovedEntryIsGoneInTheNextRunToo) {
    world->userDefaults().setString("secret", "deepgramApiKey");
    world->userDefaults().setString("kept", "other");
    world->reopenUserDefaults();
    world->userDefaults().removeObjectForKey("deepgramApiKey");
    world->userDefaults().removeObjectForKey("never there");
    EXPECT_EQ(world->userDefaults().stringForKey("deepgramApiKey"), std::nullopt);
    world->reopenUserDefaults();
    EXPECT_EQ(world->userDefaults().stringForKey("deepgramApiKey"), std::nullopt);
    EXPECT_EQ(world->userDefaults().stringForKey("other"), "kept");
}

TEST_P(UserDefaultsConformance, ThreadsSeeTheirOwnWritesAtOnce) {
    const auto write = [this](const std::string& key) {
        for (std::int64_t number = 1; number <= 300; ++number) {
            world->userDefaults().setInteger(number, key);
            ASSERT_EQ(world->userDefaults().integerForKey(key), number);
        }
    };
    std::thread other([&] { write("other"); });
    write("main");
    other.join();
    world->reopenUserDefaults();
    EXPECT_EQ(world->userDefaults().integerForKey("other"), 300);
    EXPECT_EQ(world->userDefaults().integerForKey("main"), 300);
}

INSTANTIATE_TEST_SUITE_P(Worlds, UserDefaultsConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
