// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <variant>

#include "speech-service/UtteranceRecognizer.h"
#include "tests/speech-service/ScriptedEngine.h"
#include "tests/speech-service/SyntheticSound.h"

namespace tarvik::service {

namespace {

std::string textOf(const Utterance& utterance) {
    std::string text;
    for (const Word& word : utterance.words) {
        text += (text.empty() ? "" : " ") + word.text;
    }
    return text;
}

class Recognizer : public testing::Test {
  protected:
    Recognizer() { engine_.understand("so far", "all of it"); }

    void start(const RecognitionOptions& options = {}) {
        UtteranceRecognizer::Handlers handlers;
        handlers.onUtterance = [this](const Utterance& utterance) {
            utterances_.push_back(utterance);
        };
        handlers.onSettling = [this](const std::vector<Utterance>& unfinished) {
            settling_.push_back(unfinished);
        };
        handlers.onSpeechStarted = [this](Seconds time) { speechStarts_.push_back(time); };
        handlers.onUtteranceEnd = [this](Seconds time) { utteranceEnds_.push_back(time); };
        recognizer_.emplace(*decoder_, options, std::move(handlers));
    }

    ScriptedEngine engine_;
    std::unique_ptr<Decoder> decoder_ = engine_.createDecoder().value();
    std::vector<Utterance> utterances_;
    std::vector<std::vector<Utterance>> settling_;
    std::vector<Seconds> speechStarts_;
    std::vector<Seconds> utteranceEnds_;
    std::optional<UtteranceRecognizer> recognizer_;
};

TEST_F(Recognizer, SaysNothingAboutSilenceAndNoise) {
    start();
    recognizer_->process(quiet(3) + whiteNoise(30, -39));
    recognizer_->finish();
    EXPECT_TRUE(utterances_.empty());
    EXPECT_TRUE(engine_.lengths().empty());
}

TEST_F(Recognizer, EndsASentenceAfterAPauseOfASecond) {
    start();
    recognizer_->process(quiet(1) + voice(2) + quiet(0.9));
    EXPECT_TRUE(utterances_.empty());
    recognizer_->process(quiet(0.2));
    ASSERT_EQ(utterances_.size(), 1U);
    EXPECT_EQ(textOf(utterances_[0]), "all of it");
    EXPECT_TRUE(utterances_[0].isFinal);
    EXPECT_TRUE(utterances_[0].isSpeechFinal);
    EXPECT_TRUE(utterances_[0].isSentenceEnd);
    EXPECT_FALSE(utterances_[0].isFromFinalize);
    EXPECT_NEAR(utterances_[0].start.count(), 0.85, 0.06);
    EXPECT_NEAR((utterances_[0].start + utterances_[0].duration).count(), 3.5, 0.1);
}

TEST_F(Recognizer, SettlesInThePauseBeforeTheSentenceEnds) {
    start();
    recognizer_->process(quiet(1) + voice(2) + quiet(0.6));
    EXPECT_EQ(engine_.lengths().size(), 1U);
}

TEST_F(Recognizer, TakesAHesitationForNoEndOfASentence) {
    start();
    recognizer_->process(quiet(1) + voice(2) + quiet(0.7) + voice(2) + quiet(1.2));
    ASSERT_EQ(utterances_.size(), 2U);
    EXPECT_FALSE(utterances_[0].isSentenceEnd);
    EXPECT_FALSE(utterances_[0].isSpeechFinal);
    EXPECT_FALSE(utterances_[0].isContinuation);
    EXPECT_TRUE(utterances_[1].isSentenceEnd);
    EXPECT_TRUE(utterances_[1].isContinuation);
}

TEST_F(Recognizer, EndsTheSentenceWhenOnlyACoughFollows) {
    start();
    recognizer_->process(quiet(1) + voice(2) + quiet(0.6));
    engine_.understand("", "");
    recognizer_->process(voice(0.2) + quiet(1.2));
    ASSERT_EQ(utterances_.size(), 1U);
    EXPECT_TRUE(utterances_[0].isSentenceEnd);
}

TEST_F(Recognizer, WithdrawsNoInterimWordsThatAreHeldBack) {
    RecognitionOptions options;
    options.interimResults = true;
    start(options);
    // Cut in the first pause after 10 s. Nothing follows the cut.
    recognizer_->process(quiet(1) + voice(11) + quiet(0.25));
    engine_.understand("", "");
    recognizer_->process(quiet(0.4));
    recognizer_->finish();
    std::erase_if(utterances_, [](const Utterance& utterance) { return !utterance.isFinal; });
    ASSERT_EQ(utterances_.size(), 1U);
    EXPECT_FALSE(utterances_[0].words.empty());
}

TEST_F(Recognizer, StartsTheNextSentenceAfterAPause) {
    start();
    recognizer_->process(quiet(1) + voice(2) + quiet(1.2) + voice(2) + quiet(1.2));
    ASSERT_EQ(utterances_.size(), 2U);
    EXPECT_FALSE(utterances_[1].isContinuation);
}

TEST_F(Recognizer, EndsSpeechAfterThePauseThatTheClientWants) {
    RecognitionOptions options;
    options.endpointing = Seconds(0.3);
    start(options);
    recognizer_->process(quiet(1) + voice(2) + quiet(0.4));
    ASSERT_EQ(utterances_.size(), 1U);
    EXPECT_TRUE(utterances_[0].isSpeechFinal);
}

TEST_F(Recognizer, EndsNoSpeechWithoutEndpointing) {
    RecognitionOptions options;
    options.endpointing.reset();
    start(options);
    recognizer_->process(quiet(1) + voice(2) + quiet(2));
    ASSERT_EQ(utterances_.size(), 1U);
    EXPECT_TRUE(utterances_[0].isSentenceEnd);
    EXPECT_FALSE(utterances_[0].isSpeechFinal);
}

TEST_F(Recognizer, FinishesSpeechThatGoesOn) {
    start();
    recognizer_->process(quiet(1) + voice(1));
    recognizer_->finish();
    ASSERT_EQ(utterances_.size(), 1U);
    EXPECT_TRUE(utterances_[0].isFromFinalize);
    EXPECT_TRUE(utterances_[0].isSentenceEnd);
    recognizer_->finish();
    EXPECT_EQ(utterances_.size(), 1U);
}

TEST_F(Recognizer, FinishesWhatItHoldsBack) {
    start();
    recognizer_->process(quiet(1) + voice(1) + quiet(0.6));
    EXPECT_TRUE(utterances_.empty());
    recognizer_->finish();
    ASSERT_EQ(utterances_.size(), 1U);
    EXPECT_TRUE(utterances_[0].isFromFinalize);
    EXPECT_TRUE(utterances_[0].isSentenceEnd);
}

TEST_F(Recognizer, KnowsWhatItWouldLose) {
    start();
    recognizer_->process(quiet(1) + voice(1) + quiet(0.6) + voice(0.3));
    const std::vector<Utterance> unfinished = recognizer_->unfinished();
    ASSERT_EQ(unfinished.size(), 2U);
    EXPECT_EQ(textOf(unfinished[0]), "all of it");
    EXPECT_FALSE(unfinished[0].isSentenceEnd);
    EXPECT_EQ(textOf(unfinished[1]), "so far");
    EXPECT_TRUE(unfinished[1].isFinal);
    EXPECT_TRUE(unfinished[1].isSentenceEnd);
    EXPECT_TRUE(unfinished[1].isContinuation);
    // It was told the same before the first settling.
    ASSERT_EQ(settling_.size(), 1U);
    EXPECT_EQ(textOf(settling_[0].at(0)), "so far");
}

TEST_F(Recognizer, ReportsInterimWordsOnceAndWithdrawsThem) {
    RecognitionOptions options;
    options.interimResults = true;
    start(options);
    engine_.understand("so far", "");
    recognizer_->process(quiet(1) + voice(2.5));
    ASSERT_EQ(utterances_.size(), 1U);
    EXPECT_FALSE(utterances_[0].isFinal);
    recognizer_->process(quiet(1.2));
    ASSERT_EQ(utterances_.size(), 2U);
    EXPECT_TRUE(utterances_[1].isFinal);
    EXPECT_TRUE(utterances_[1].words.empty());
    EXPECT_TRUE(utterances_[1].isSpeechFinal);
}

// Words of 0.3 s each, so that one lasts from 12 to 12.3 s.
std::string numberedWords(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += "w" + std::to_string(i) + " ";
    }
    return text;
}

TEST_F(Recognizer, CutsLongSpeechWhereItIsQuietest) {
    engine_.understand("so far", numberedWords(46));
    start();
    // The utterance begins about 0.15 s before the voice, and w39 ends 12 s after that.
    recognizer_->process(quiet(1) + voice(11.82) + voice(0.06, -40) + voice(4.17));
    const std::vector<Seconds> lengths = engine_.lengths();
    ASSERT_EQ(lengths.size(), 1U);
    EXPECT_NEAR(lengths[0].count(), 14, 0.05);
    engine_.understand("more", "more");
    recognizer_->process(quiet(1.2));
    ASSERT_EQ(utterances_.size(), 2U);
    EXPECT_NEAR(utterances_[0].duration.count(), 12, 0.06);
    EXPECT_EQ(utterances_[0].words.size(), 40U);
    EXPECT_FALSE(utterances_[0].isSentenceEnd);
    EXPECT_TRUE(utterances_[1].isContinuation);
    // Nothing is skipped and nothing is decoded into both.
    EXPECT_NEAR((utterances_[0].start + utterances_[0].duration).count(),
                utterances_[1].start.count(), 0.001);
    EXPECT_NEAR(engine_.lengths()[1].count(), 17.5 - utterances_[1].start.count() + 0.05, 0.1);
    for (const Word& word : utterances_[0].words) {
        EXPECT_LE(word.end, utterances_[0].start + utterances_[0].duration + Seconds(0.05));
    }
}

TEST_F(Recognizer, CutsAtAShortPauseAfterTenSeconds) {
    start();
    recognizer_->process(quiet(1) + voice(11) + quiet(0.25) + voice(1));
    ASSERT_EQ(engine_.lengths().size(), 1U);
    EXPECT_LT(engine_.lengths()[0].count(), 11.5);
}

TEST_F(Recognizer, EndsTheSentenceWhenThePauseAfterACutGoesOn) {
    start();
    recognizer_->process(quiet(1) + voice(11) + quiet(0.25));
    engine_.understand("", "");
    recognizer_->process(quiet(1));
    ASSERT_EQ(utterances_.size(), 1U);
    EXPECT_TRUE(utterances_[0].isSentenceEnd);
}

TEST_F(Recognizer, TellsWhenSpeechBegins) {
    RecognitionOptions options;
    options.speechEvents = true;
    start(options);
    recognizer_->process(quiet(1) + voice(1) + quiet(1.2) + voice(1));
    ASSERT_EQ(speechStarts_.size(), 2U);
    EXPECT_NEAR(speechStarts_[0].count(), 0.85, 0.06);
    EXPECT_NEAR(speechStarts_[1].count(), 3.05, 0.06);
}

TEST_F(Recognizer, TellsOnceWhenNoWordCameForTheTimeThatTheClientWants) {
    RecognitionOptions options;
    options.interimResults = true;
    options.utteranceEnd = Seconds(1);
    start(options);
    recognizer_->process(quiet(1) + voice(1) + quiet(5));
    ASSERT_EQ(utteranceEnds_.size(), 1U);
    EXPECT_NEAR(utteranceEnds_[0].count(), utterances_.back().words.back().end.count(), 0.001);
}

TEST_F(Recognizer, CountsThatTimeFromTheWordsThatItHoldsBack) {
    // The interim words end long before the settled ones.
    engine_.understand("so far", numberedWords(7));
    RecognitionOptions options;
    options.interimResults = true;
    options.utteranceEnd = Seconds(1);
    start(options);
    recognizer_->process(quiet(1) + voice(2) + quiet(0.7));
    EXPECT_TRUE(utteranceEnds_.empty());
    recognizer_->process(quiet(0.5));
    EXPECT_EQ(utteranceEnds_.size(), 1U);
}

TEST_F(Recognizer, TakesAudioInPiecesOfAnySize) {
    start();
    const Sound sound = quiet(1) + voice(1) + quiet(1.2);
    for (std::size_t i = 0; i < sound.size(); i += 37) {
        recognizer_->process(
            std::span(sound).subspan(i, std::min<std::size_t>(37, sound.size() - i)));
    }
    EXPECT_EQ(utterances_.size(), 1U);
    EXPECT_NEAR(recognizer_->position().count(), 3.2, 0.011);
}

}  // namespace

}  // namespace tarvik::service
