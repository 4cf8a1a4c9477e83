// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <sstream>

#include "speech-service/Figures.h"

namespace tarvik::service {

namespace {

std::vector<WrittenWord> wordsOf(const std::string& text) {
    std::vector<WrittenWord> words;
    std::istringstream stream(text);
    for (std::string word; stream >> word;) {
        const Seconds start(static_cast<double>(words.size()));
        words.push_back({{word, start, start + Seconds(1), 1.0 / (1 + start.count())}, word});
    }
    return words;
}

std::string figures(const std::string& text) {
    std::string written;
    for (const WrittenWord& word : withFigures(wordsOf(text))) {
        written += (written.empty() ? "" : " ") + word.written;
    }
    return written;
}

struct Case {
    const char* spoken;
    const char* written;
};

class Figures : public testing::TestWithParam<Case> {};

TEST_P(Figures, AreWritten) {
    EXPECT_EQ(figures(GetParam().spoken), GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, Figures,
    testing::Values(Case{"twenty three people", "23 people"}, Case{"ten or eleven", "10 or 11"},
                    Case{"one hundred and five", "105"}, Case{"three hundred", "300"},
                    Case{"two thousand and twenty six", "2026"},
                    Case{"forty five thousand two hundred", "45,200"},
                    Case{"three million two hundred thousand and one", "3,200,001"},
                    Case{"nineteen eighty four", "1984"}, Case{"nineteen oh five", "1905"},
                    Case{"twenty twenty six was good", "2026 was good"},
                    Case{"three point one four", "3.14"}, Case{"zero point five", "0.5"}));

INSTANTIATE_TEST_SUITE_P(
    Units, Figures,
    testing::Values(Case{"five percent", "5%"}, Case{"twenty five percent of it", "25% of it"},
                    Case{"ten dollars", "$10"}, Case{"three dollars and fifty cents", "$3.50"},
                    Case{"two point five million dollars", "2.5 million dollars"},
                    Case{"six euros", "€6"}));

INSTANTIATE_TEST_SUITE_P(Times, Figures,
                         testing::Values(Case{"at three thirty p.m. today", "at 3:30 PM today"},
                                         Case{"three p m", "3 PM"},
                                         Case{"at ten fifteen", "at 10:15"},
                                         Case{"by nine oh five", "by 9:05"},
                                         Case{"six o'clock", "6 o'clock"},
                                         Case{"at ten in the morning", "at 10 in the morning"}));

INSTANTIATE_TEST_SUITE_P(Dates, Figures,
                         testing::Values(Case{"july fourth", "july 4th"},
                                         Case{"on march twenty second", "on March 22nd"},
                                         Case{"may first nineteen eighty four", "May 1st 1984"},
                                         Case{"the third of june", "the 3rd of june"},
                                         Case{"june five", "june 5"},
                                         Case{"the twenty first century", "the 21st century"},
                                         Case{"in june twenty twenty", "in june 2020"}));

INSTANTIATE_TEST_SUITE_P(Digits, Figures,
                         testing::Values(Case{"call five five five oh one two three",
                                              "call 5550123"},
                                         Case{"zero zero seven", "007"}));

INSTANTIATE_TEST_SUITE_P(
    Words, Figures,
    testing::Values(Case{"one of them", "one of them"}, Case{"two or three", "two or three"},
                    Case{"the first and the second", "the first and the second"},
                    Case{"oh i see", "oh i see"}, Case{"you may march", "you may march"},
                    Case{"what is the point", "what is the point"},
                    Case{"a hundred times", "a hundred times"}, Case{"hundred", "hundred"},
                    Case{"and so on", "and so on"}, Case{"i am nine", "i am nine"},
                    Case{"one and two and three", "one and two and three"}, Case{"", ""}));

TEST(FiguresOfSeveralWords, LastFromTheFirstToTheLastAndAreAsSureAsTheLeastSure) {
    const std::vector<WrittenWord> words = withFigures(wordsOf("about twenty three people"));
    ASSERT_EQ(words.size(), 3U);
    EXPECT_EQ(words[1].spoken.text, "twenty three");
    EXPECT_EQ(words[1].spoken.start, Seconds(1));
    EXPECT_EQ(words[1].spoken.end, Seconds(3));
    EXPECT_DOUBLE_EQ(words[1].spoken.confidence, 1.0 / 3);
}

}  // namespace

}  // namespace tarvik::service
