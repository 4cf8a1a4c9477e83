// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "speech-service/WrittenText.h"

namespace tarvik::service {

namespace {

std::string textsOf(const std::vector<Word>& words) {
    std::string text;
    for (const Word& word : words) {
        text += (text.empty() ? "" : "|") + word.text + "=" + word.written;
    }
    return text;
}

TEST(WrittenText, JoinsThePiecesOfAWord) {
    const std::vector<Word> words = wordsOfWrittenText({{" Dic", Seconds(0), Seconds(0.2), 0.9},
                                                        {"tation", Seconds(0.2), Seconds(0.5), 0.5},
                                                        {",", Seconds(0.5), Seconds(0.5), 0.8},
                                                        {" she's", Seconds(0.6), Seconds(1), 0.7}});
    EXPECT_EQ(textsOf(words), "dictation=Dictation,|she's=she's");
    EXPECT_EQ(words[0].start, Seconds(0));
    EXPECT_EQ(words[0].end, Seconds(0.5));
    EXPECT_DOUBLE_EQ(words[0].confidence, 0.5);
}

TEST(WrittenText, LeavesOutSounds) {
    EXPECT_EQ(textsOf(wordsOfWrittenText({{" [BLANK_AUDIO]"}})), "");
    EXPECT_EQ(textsOf(wordsOfWrittenText({{" (door"}, {" closes)"}, {" Yes."}})), "yes=Yes.");
    EXPECT_EQ(textsOf(wordsOfWrittenText({{" -"}, {" ..."}, {" No!"}})), "no=No!");
}

TEST(WrittenText, BeginsWithAWordAlsoWithoutASpace) {
    EXPECT_EQ(textsOf(wordsOfWrittenText({{"Hel"}, {"lo"}})), "hello=Hello");
    EXPECT_TRUE(wordsOfWrittenText({}).empty());
}

}  // namespace

}  // namespace tarvik::service
