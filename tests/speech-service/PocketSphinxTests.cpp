// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "speech-service/EngineChoice.h"
#include "speech-service/UtteranceRecognizer.h"
#include "tests/speech-service/Speech.h"
#include "tests/speech-service/SyntheticSound.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::service {

namespace {

class PocketSphinx : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        engine_ = createEngine(defaultEngine, {}).value();
        decoder_ = engine_->createDecoder().value();
    }
    static void TearDownTestSuite() {
        decoder_.reset();
        engine_.reset();
    }

    static Sound spoken(const std::string& text, double lead, double tail) {
        const Audio audio = speech(text, 16000, lead, tail);
        Sound sound;
        for (std::size_t i = 0; i + 1 < audio.size(); i += 2) {
            sound.push_back(static_cast<std::int16_t>(audio[i] | audio[i + 1] << 8));
        }
        return sound;
    }

    static std::string textOf(const std::vector<Word>& words) {
        std::string text;
        for (const Word& word : words) {
            text += (text.empty() ? "" : " ") + word.text;
        }
        return text;
    }

    /// The final utterances in `sound`.
    static std::vector<Utterance> finalsOf(const Sound& sound) {
        std::vector<Utterance> finals;
        UtteranceRecognizer::Handlers handlers;
        handlers.onUtterance = [&](const Utterance& utterance) { finals.push_back(utterance); };
        UtteranceRecognizer recognizer(*decoder_, {}, std::move(handlers));
        recognizer.process(sound);
        recognizer.finish();
        return finals;
    }

    static std::string textOf(const std::vector<Utterance>& utterances) {
        std::string text;
        for (const Utterance& utterance : utterances) {
            text += (text.empty() ? "" : " ") + textOf(utterance.words);
        }
        return text;
    }

    static std::ptrdiff_t wordCount(const std::string& text) {
        return 1 + std::count(text.begin(), text.end(), ' ');
    }

    inline static std::unique_ptr<Engine> engine_;
    inline static std::unique_ptr<Decoder> decoder_;
};

TEST_F(PocketSphinx, KnowsMostWordsBeforeTheEnd) {
    decoder_->startStream();
    decoder_->startUtterance();
    const Sound sound = spoken("thank you for your letter", 0.2, 0.3);
    decoder_->process(sound);
    const Hypothesis hypothesis = decoder_->hypothesis();
    EXPECT_EQ(textOf(hypothesis.words), "thank you for your letter");
    EXPECT_NEAR(hypothesis.covered.count(), static_cast<double>(sound.size()) / 16000, 0.01);
    EXPECT_EQ(hypothesis.words.front().confidence, 0);
    const std::vector<Word> words = decoder_->endUtterance();
    EXPECT_EQ(textOf(words), "thank you for your letter");
    EXPECT_GT(words.front().confidence, 0);
    EXPECT_NEAR(words.front().start.count(), 0.3, 0.15);
}

TEST_F(PocketSphinx, CountsTheTimesFromTheStartOfEachUtterance) {
    decoder_->startStream();
    const Sound sound = spoken("thank you for your letter", 0.2, 0.3);
    for (int utterance = 0; utterance < 3; ++utterance) {
        decoder_->startUtterance();
        decoder_->process(sound);
        EXPECT_NEAR(decoder_->hypothesis().words.front().start.count(), 0.3, 0.15);
        EXPECT_NEAR(decoder_->endUtterance().front().start.count(), 0.3, 0.15);
    }
}

TEST_F(PocketSphinx, ForgetsTheStreamBefore) {
    const Sound sound = spoken("the words appear in the editor", 0.5, 1.5);
    const std::string first = textOf(finalsOf(sound));
    finalsOf(mixed(spoken("this room is full of noise", 0.5, 1.5), whiteNoise(10, -30)));
    EXPECT_EQ(textOf(finalsOf(sound)), first);
}

TEST_F(PocketSphinx, UnderstandsNothingInSilenceAndNoise) {
    EXPECT_EQ(textOf(finalsOf(quiet(5))), "");
    EXPECT_EQ(textOf(finalsOf(whiteNoise(8, -39))), "");
    EXPECT_EQ(textOf(finalsOf(whiteNoise(8, -25))), "");
    EXPECT_EQ(textOf(finalsOf(brownNoise(8, -30))), "");
}

TEST_F(PocketSphinx, UnderstandsSpeechAboveTheNoiseOfARoom) {
    const Sound sound = spoken("thank you for your letter", 2, 1.5);
    EXPECT_EQ(textOf(finalsOf(mixed(sound, whiteNoise(10, -60)))), "thank you for your letter");
}

TEST_F(PocketSphinx, LosesNoWordAtACut) {
    // The voice pauses at punctuation only.
    std::string text = "good morning everyone";
    for (int i = 0; i < 16; ++i) {
        text += " and welcome to the meeting";
    }
    const std::vector<Utterance> finals = finalsOf(spoken(text, 0.3, 1.5));
    EXPECT_GE(finals.size(), 2U);
    EXPECT_EQ(wordCount(textOf(finals)), wordCount(text)) << textOf(finals);
    for (const Utterance& final : finals) {
        EXPECT_LE(final.duration.count(), 14.1);
    }
}

TEST_F(PocketSphinx, RefusesAModelThatIsNone) {
    const tests::TemporaryFolder folder;
    const std::filesystem::path model = POCKETSPHINX_MODEL;
    std::filesystem::create_directory_symlink(model / "en-us", folder / "en-us");
    std::filesystem::create_symlink(model / "cmudict-en-us.dict", folder / "cmudict-en-us.dict");
    std::ofstream(folder / "en-us.lm.bin") << "no model";
    const auto engine = createEngine(defaultEngine, folder.path());
    ASSERT_TRUE(engine);
    const auto decoder = engine.value()->createDecoder();
    ASSERT_FALSE(decoder);
    EXPECT_EQ(decoder.error().localizedDescription,
              "The speech models in " + folder.path().string() + " could not be loaded");
}

}  // namespace

}  // namespace tarvik::service
