// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "speech-service/EngineChoice.h"
#include "tests/speech-service/SyntheticSound.h"
#include "tests/speech-service/WhisperModelFile.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::service {

namespace {

std::string refusalOf(const std::filesystem::path& model) {
    const auto engine = createEngine("whisper", model);
    return engine ? "accepted" : engine.error().localizedDescription;
}

TEST(Whisper, NeedsAModelThatIsOne) {
    const tests::TemporaryFolder folder;
    EXPECT_EQ(refusalOf({}), "The engine \"whisper\" needs --model with a model file");
    EXPECT_EQ(refusalOf(folder / "none"),
              "There is no speech model in " + (folder / "none").string());
    std::ofstream(folder / "garbage") << std::string(100000, 'x');
    EXPECT_EQ(refusalOf(folder / "garbage"),
              "The speech model in " + (folder / "garbage").string() + " could not be loaded");
    std::ofstream(folder / "empty") << "";
    EXPECT_EQ(refusalOf(folder / "empty"),
              "The speech model in " + (folder / "empty").string() + " could not be loaded");
}

TEST(Whisper, TakesAModelInHalfPrecision) {
    const tests::TemporaryFolder folder;
    writeRandomWhisperModel(folder / "half.bin", {.isHalfPrecision = true});
    const auto engine = createEngine("whisper", folder / "half.bin");
    ASSERT_TRUE(engine);
    const auto decoder = engine.value()->createDecoder();
    ASSERT_TRUE(decoder);
    decoder.value()->startStream();
    decoder.value()->startUtterance();
    decoder.value()->process(voice(1));
    decoder.value()->endUtterance();
    EXPECT_NEAR(decoder.value()->hypothesis().covered.count(), 1, 0.01);
}

class RandomWhisper : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        const tests::TemporaryFolder folder;
        writeRandomWhisperModel(folder / "random.bin");
        engine_ = createEngine("whisper", folder / "random.bin").value();
    }
    static void TearDownTestSuite() { engine_.reset(); }

    inline static std::unique_ptr<Engine> engine_;
};

TEST_F(RandomWhisper, HasTheNameOfItsFile) {
    EXPECT_EQ(engine_->info().name, "random");
    EXPECT_EQ(engine_->info().architecture, "whisper");
    EXPECT_FALSE(engine_->info().version.empty());
}

TEST_F(RandomWhisper, DecodesEveryUtteranceToItsEnd) {
    const auto decoder = engine_->createDecoder();
    ASSERT_TRUE(decoder);
    decoder.value()->startStream();
    for (const double length : {0.2, 4.0}) {
        decoder.value()->startUtterance();
        decoder.value()->process(voice(length));
        decoder.value()->endUtterance();
        EXPECT_NEAR(decoder.value()->hypothesis().covered.count(), length, 0.01);
    }
}

TEST_F(RandomWhisper, SharesItsModelAmongDecoders) {
    const auto first = engine_->createDecoder();
    const auto second = engine_->createDecoder();
    ASSERT_TRUE(first && second);
    std::vector<std::thread> threads;
    for (Decoder* decoder : {first.value().get(), second.value().get()}) {
        threads.emplace_back([decoder] {
            decoder->startStream();
            decoder->startUtterance();
            decoder->process(voice(2));
            decoder->endUtterance();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_NEAR(first.value()->hypothesis().covered.count(), 2, 0.01);
    EXPECT_NEAR(second.value()->hypothesis().covered.count(), 2, 0.01);
}

TEST_F(RandomWhisper, StopsWhenAborted) {
    const auto decoder = engine_->createDecoder();
    ASSERT_TRUE(decoder);
    decoder.value()->startStream();
    decoder.value()->startUtterance();
    decoder.value()->process(voice(8));
    decoder.value()->abort();
    EXPECT_TRUE(decoder.value()->endUtterance().empty());
    EXPECT_EQ(decoder.value()->hypothesis().covered, Seconds(0));
    // The next stream begins without the abort.
    decoder.value()->startStream();
    decoder.value()->startUtterance();
    decoder.value()->process(voice(1));
    decoder.value()->endUtterance();
    EXPECT_NEAR(decoder.value()->hypothesis().covered.count(), 1, 0.01);
}

}  // namespace

}  // namespace tarvik::service
