// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <sstream>

#include "speech-service/UtteranceFormatter.h"

namespace tarvik::service {

namespace {

Utterance utteranceOf(const std::string& text) {
    Utterance utterance;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        utterance.words.push_back({word, {}, {}, 1});
    }
    return utterance;
}

std::string written(const Utterance& utterance) {
    std::string text;
    for (const std::string& word : writtenWords(utterance)) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

TEST(UtteranceFormatter, WritesAWholeUtteranceAsASentence) {
    Utterance utterance = utteranceOf("this is a test");
    utterance.isFinal = true;
    utterance.isSpeechFinal = true;
    EXPECT_EQ(written(utterance), "This is a test.");
}

TEST(UtteranceFormatter, LeavesTheEndOpenWhileSomebodySpeaks) {
    EXPECT_EQ(written(utteranceOf("this is")), "This is");
}

TEST(UtteranceFormatter, GoesOnInTheMiddleOfASentenceAfterACut) {
    Utterance utterance = utteranceOf("and that was all");
    utterance.isContinuation = true;
    utterance.isSpeechFinal = true;
    EXPECT_EQ(written(utterance), "and that was all.");
}

TEST(UtteranceFormatter, WritesTheSpeakerAndTheCalendarWithCapitals) {
    EXPECT_EQ(written(utteranceOf("if i may i'll come on monday in july or in march it is")),
              "If I may I'll come on Monday in July or in march it is");
}

TEST(UtteranceFormatter, WritesNothingForNothing) {
    Utterance utterance;
    utterance.isSpeechFinal = true;
    EXPECT_TRUE(writtenWords(utterance).empty());
}

}  // namespace

}  // namespace tarvik::service
