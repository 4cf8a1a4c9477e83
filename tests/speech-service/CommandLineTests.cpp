// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <vector>

#include "speech-service/CommandLine.h"

namespace tarvik::service {

namespace {

Result<CommandLine> parse(std::vector<std::string_view> arguments) {
    return parseCommandLine(arguments);
}

TEST(CommandLine, ServesOnThePortAndFolderThatItNames) {
    const Result<CommandLine> line = parse({"--port", "0", "--state-directory=/some/where"});
    ASSERT_TRUE(line);
    EXPECT_EQ(line.value().action, CommandLine::Action::serve);
    EXPECT_EQ(line.value().port, 0);
    EXPECT_EQ(line.value().stateDirectory, "/some/where");
}

TEST(CommandLine, HasAPortAndAFolderOfItsOwn) {
    setenv("XDG_STATE_HOME", "/state", 1);
    EXPECT_EQ(parse({}).value().port, 8443);
    EXPECT_EQ(parse({}).value().stateDirectory, "/state/tarvik-speech-service");
    unsetenv("XDG_STATE_HOME");
    setenv("HOME", "/home/somebody", 1);
    EXPECT_EQ(parse({}).value().stateDirectory,
              "/home/somebody/.local/state/tarvik-speech-service");
}

TEST(CommandLine, NamesEngineModelKeysAndLimits) {
    const Result<CommandLine> line =
        parse({"--engine=whisper", "--model", "/models/small.bin", "--max-streams=3",
               "--metrics-port", "9100", "--keys=/etc/keys", "--refuse", "503"});
    ASSERT_TRUE(line);
    EXPECT_EQ(line.value().engine, "whisper");
    EXPECT_EQ(line.value().model, "/models/small.bin");
    EXPECT_EQ(line.value().maxStreams, 3U);
    EXPECT_EQ(line.value().metricsPort, 9100);
    EXPECT_EQ(line.value().keyFile, "/etc/keys");
    EXPECT_EQ(line.value().refusal, 503);
}

TEST(CommandLine, HasTheDefaultEngineAndNoLimitsOfItsOwn) {
    const Result<CommandLine> line = parse({});
    EXPECT_EQ(line.value().engine, defaultEngine);
    EXPECT_TRUE(line.value().model.empty());
    EXPECT_FALSE(line.value().maxStreams);
    EXPECT_FALSE(line.value().metricsPort);
    EXPECT_TRUE(line.value().keyFile.empty());
    EXPECT_FALSE(line.value().refusal);
}

TEST(CommandLine, RefusesWhatItDoesNotUnderstand) {
    const std::vector<std::pair<std::vector<std::string_view>, std::string_view>> cases{
        {{"--frobnicate"}, "There is no option \"--frobnicate\""},
        {{"8443"}, "There is no option \"8443\""},
        {{"--port"}, "--port needs a value"},
        {{"--port", "70000"}, "--port takes a number from 0 to 65535, not \"70000\""},
        {{"--port=eight"}, "--port takes a number from 0 to 65535, not \"eight\""},
        {{"--state-directory="}, "--state-directory takes a folder"},
        {{"--engine="}, "--engine takes the name of an engine"},
        {{"--model="}, "--model takes a file or a folder"},
        {{"--keys="}, "--keys takes a file"},
        {{"--max-streams=0"}, "--max-streams takes a number from 1 to 10000, not \"0\""},
        {{"--metrics-port=-1"}, "--metrics-port takes a number from 0 to 65535, not \"-1\""},
        {{"--refuse=200"}, "--refuse takes a number from 400 to 599, not \"200\""}};
    for (const auto& [arguments, expected] : cases) {
        const Result<CommandLine> line = parse(arguments);
        ASSERT_FALSE(line);
        EXPECT_EQ(line.error().localizedDescription, expected);
    }
}

}  // namespace

}  // namespace tarvik::service
