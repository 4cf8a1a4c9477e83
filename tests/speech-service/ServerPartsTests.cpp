// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <array>
#include <fstream>

#include "speech-service/Digest.h"
#include "speech-service/EngineChoice.h"
#include "speech-service/KeyFile.h"
#include "speech-service/StreamLimit.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::service {

namespace {

constexpr std::size_t mebibyte = std::size_t{1024} * 1024;

EngineInfo needing(std::size_t memory, double streamsPerCore) {
    EngineInfo engine;
    engine.decoderMemory = memory;
    engine.streamsPerCore = streamsPerCore;
    return engine;
}

TEST(StreamLimit, FollowsTheCores) {
    EXPECT_EQ(maxStreamsOn(2, 8192 * mebibyte, needing(96 * mebibyte, 4)), 8U);
    EXPECT_EQ(maxStreamsOn(8, 8192 * mebibyte, needing(96 * mebibyte, 0.5)), 4U);
}

TEST(StreamLimit, LeavesHalfOfTheMemory) {
    EXPECT_EQ(maxStreamsOn(16, 1024 * mebibyte, needing(100 * mebibyte, 4)), 5U);
}

TEST(StreamLimit, IsAtLeastOne) {
    EXPECT_EQ(maxStreamsOn(0, 0, needing(0, 0)), 1U);
    EXPECT_EQ(maxStreamsOn(1, 10 * mebibyte, needing(100 * mebibyte, 4)), 1U);
    EXPECT_GE(maxStreamsHere(needing(100 * mebibyte, 4)), 1U);
}

TEST(Digest, IsTheSha256OfAllPieces) {
    Digest digest;
    EXPECT_EQ(digest.text(), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    const std::array<std::uint8_t, 3> bytes{'a', 'b', 'c'};
    digest.add(std::span(bytes).first(1));
    digest.add(std::span(bytes).subspan(1));
    constexpr const char* abc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    EXPECT_EQ(digest.text(), abc);
    EXPECT_EQ(digest.text(), abc);
}

class KeyFile : public testing::Test {
  protected:
    std::filesystem::path fileOf(const std::string& content) {
        std::ofstream(folder_ / "keys") << content;
        return folder_ / "keys";
    }

    tests::TemporaryFolder folder_;
};

TEST_F(KeyFile, HasAKeyALine) {
    const auto keys = readKeyFile(fileOf("# the team\n\nalpha\n  beta key \r\n#gamma\n"));
    ASSERT_TRUE(keys);
    EXPECT_EQ(keys.value(), (std::set<std::string, std::less<>>{"alpha", "beta key"}));
}

TEST_F(KeyFile, WithoutAKeyIsAnErrorAndOpensNothing) {
    EXPECT_EQ(readKeyFile(fileOf("# nobody\n")).error().localizedDescription,
              "There is no key in " + (folder_ / "keys").string());
    EXPECT_EQ(readKeyFile(folder_ / "none").error().localizedDescription,
              "The keys in " + (folder_ / "none").string() + " cannot be read");
}

TEST(EngineChoice, KnowsTheDefaultEngine) {
    const auto engine = createEngine(defaultEngine, {});
    ASSERT_TRUE(engine);
    EXPECT_EQ(engine.value()->info().architecture, "pocketsphinx");
    EXPECT_TRUE(engineNames().starts_with(defaultEngine));
}

TEST(EngineChoice, NamesTheEnginesWhenAskedForAnother) {
    EXPECT_EQ(createEngine("parrot", {}).error().localizedDescription,
              "There is no engine \"parrot\" in this build; it has " + engineNames());
}

TEST(EngineChoice, SaysWhichFileOfAModelIsMissing) {
    const tests::TemporaryFolder folder;
    EXPECT_EQ(createEngine(defaultEngine, folder.path()).error().localizedDescription,
              "There is no speech model in " + folder.path().string() + ": en-us/mdef is missing");
}

}  // namespace

}  // namespace tarvik::service
