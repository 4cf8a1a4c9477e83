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

std::string written(const Utterance& utterance, const TranscriptStyle& style = {true, false}) {
    std::string text;
    for (const WrittenWord& word : writtenWords(utterance, style)) {
        text += (text.empty() ? "" : " ") + word.written;
    }
    return text;
}

TEST(UtteranceFormatter, WritesAWholeUtteranceAsASentence) {
    Utterance utterance = utteranceOf("this is a test");
    utterance.isFinal = true;
    utterance.isSentenceEnd = true;
    EXPECT_EQ(written(utterance), "This is a test.");
}

TEST(UtteranceFormatter, LeavesTheEndOpenWhileSomebodySpeaks) {
    EXPECT_EQ(written(utteranceOf("this is")), "This is");
}

TEST(UtteranceFormatter, GoesOnInTheMiddleOfASentenceAfterACut) {
    Utterance utterance = utteranceOf("and that was all");
    utterance.isContinuation = true;
    utterance.isSentenceEnd = true;
    EXPECT_EQ(written(utterance), "and that was all.");
}

TEST(UtteranceFormatter, WritesTheSpeakerAndTheCalendarWithCapitals) {
    EXPECT_EQ(written(utteranceOf("if i may i'll come on monday in july or in march it is")),
              "If I may I'll come on Monday in July or in march it is");
}

TEST(UtteranceFormatter, WritesNothingForNothing) {
    Utterance utterance;
    utterance.isSentenceEnd = true;
    EXPECT_TRUE(writtenWords(utterance, {true, true}).empty());
}

TEST(UtteranceFormatter, LeavesTheWordsAsSpokenWithoutPunctuation) {
    Utterance utterance = utteranceOf("i said ten on monday");
    utterance.isSentenceEnd = true;
    EXPECT_EQ(written(utterance, {false, false}), "i said ten on monday");
}

TEST(UtteranceFormatter, WritesFiguresWhenAsked) {
    Utterance utterance = utteranceOf("twenty three came on june fourth");
    utterance.isSentenceEnd = true;
    EXPECT_EQ(written(utterance, {true, true}), "23 came on June 4th.");
    EXPECT_EQ(written(utterance, {false, true}), "23 came on june 4th");
    EXPECT_EQ(written(utterance, {true, false}), "Twenty three came on June fourth.");
}

TEST(UtteranceFormatter, LeavesTheWritingToAnEngineThatWrites) {
    Utterance utterance = utteranceOf("hello 23 worlds");
    utterance.words[0].written = "Hello,";
    utterance.words[1].written = "23";
    utterance.words[2].written = "worlds!";
    utterance.isSentenceEnd = true;
    EXPECT_EQ(written(utterance, {true, true}), "Hello, 23 worlds!");
    EXPECT_EQ(written(utterance, {false, false}), "hello 23 worlds");
}

}  // namespace

}  // namespace tarvik::service
