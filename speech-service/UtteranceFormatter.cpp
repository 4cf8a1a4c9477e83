// SPDX-License-Identifier: MIT

#include "speech-service/UtteranceFormatter.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tarvik::service {

namespace {

// "march" and "may" are missing, because they are mostly verbs.
constexpr std::array<std::string_view, 17> calendarNames{
    "monday", "tuesday",   "wednesday", "thursday", "friday",  "saturday",
    "sunday", "january",   "february",  "april",    "june",    "july",
    "august", "september", "october",   "november", "december"};

void capitalize(std::string& word) {
    if (word.front() >= 'a' && word.front() <= 'z') {
        word.front() = static_cast<char>(word.front() - 'a' + 'A');
    }
}

bool isAlwaysCapital(std::string_view word) {
    const std::string_view stem = word.substr(0, word.find('\''));
    return stem == "i" ||
           std::find(calendarNames.begin(), calendarNames.end(), stem) != calendarNames.end();
}

}  // namespace

std::vector<std::string> writtenWords(const Utterance& utterance) {
    std::vector<std::string> written;
    written.reserve(utterance.words.size());
    for (const Word& word : utterance.words) {
        written.push_back(word.text);
        const bool isFirst = written.size() == 1 && !utterance.isContinuation;
        if (isFirst || isAlwaysCapital(word.text)) {
            capitalize(written.back());
        }
    }
    if (!written.empty() && utterance.isSpeechFinal) {
        written.back() += '.';
    }
    return written;
}

}  // namespace tarvik::service
