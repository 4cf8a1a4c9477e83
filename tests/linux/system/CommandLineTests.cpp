// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <array>

#include "platform/linux/system/CommandLine.h"

namespace tarvik::linuxdesktop {
namespace {

std::optional<CommandLineAnswer> answerTo(std::initializer_list<std::string_view> arguments) {
    return answerToArguments({arguments.begin(), arguments.size()});
}

TEST(CommandLine, StartsTheApplicationWithoutArguments) {
    EXPECT_FALSE(answerTo({}));
}

TEST(CommandLine, TellsTheVersion) {
    const auto answer = answerTo({"--version"});
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->text, "Tarvik Dictate " TARVIK_VERSION "\n");
    EXPECT_EQ(answer->status, 0);
}

TEST(CommandLine, NamesTheHotkeysInItsHelp) {
    const auto answer = answerTo({"--help"});
    ASSERT_TRUE(answer);
    EXPECT_NE(answer->text.find("Hold Alt+Space"), std::string::npos);
    EXPECT_NE(answer->text.find("Tap Alt+Shift+Space"), std::string::npos);
    EXPECT_EQ(answer->status, 0);
}

TEST(CommandLine, RefusesEverythingElse) {
    const std::array<std::initializer_list<std::string_view>, 7> refused = {
        {{"--setup"},
         {"-h"},
         {"-platform"},
         {""},
         {"speech.wav"},
         {"--help", "--setup"},
         {"--setup", "--help"}}};
    for (const auto& arguments : refused) {
        const auto answer = answerTo(arguments);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 2) << answer->text;
    }
    EXPECT_NE(answerTo({"--help", "--setup"})->text.find("\"--setup\""), std::string::npos);
}

}  // namespace
}  // namespace tarvik::linuxdesktop
