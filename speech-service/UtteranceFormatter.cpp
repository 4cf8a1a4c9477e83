// SPDX-License-Identifier: MIT

#include "speech-service/UtteranceFormatter.h"

#include <string>
#include <string_view>

#include "speech-service/Calendar.h"
#include "speech-service/Figures.h"

namespace tarvik::service {

namespace {

void capitalize(std::string& word) {
    if (word.front() >= 'a' && word.front() <= 'z') {
        word.front() = static_cast<char>(word.front() - 'a' + 'A');
    }
}

bool isAlwaysCapital(std::string_view word) {
    const std::string_view stem = word.substr(0, word.find('\''));
    return stem == "i" || isCalendarName(stem);
}

bool isWrittenOut(const Utterance& utterance) {
    return !utterance.words.empty() && !utterance.words.front().written.empty();
}

void punctuate(std::vector<WrittenWord>& words, const Utterance& utterance) {
    for (WrittenWord& word : words) {
        const bool isFirst = &word == &words.front() && !utterance.isContinuation;
        if (isFirst || isAlwaysCapital(word.spoken.text)) {
            capitalize(word.written);
        }
    }
    if (!words.empty() && utterance.isSentenceEnd) {
        words.back().written += '.';
    }
}

}  // namespace

std::vector<WrittenWord> writtenWords(const Utterance& utterance, const TranscriptStyle& style) {
    const bool keepsWriting = style.punctuate && isWrittenOut(utterance);
    std::vector<WrittenWord> words;
    words.reserve(utterance.words.size());
    for (const Word& word : utterance.words) {
        words.push_back({word, keepsWriting ? word.written : word.text});
    }
    if (keepsWriting) {
        return words;
    }
    if (style.numerals) {
        words = withFigures(words);
    }
    if (style.punctuate) {
        punctuate(words, utterance);
    }
    return words;
}

}  // namespace tarvik::service
