// SPDX-License-Identifier: MIT

#include "speech-service/WrittenText.h"

#include <algorithm>
#include <string_view>

#include "base/Text.h"

namespace tarvik::service {

namespace {

bool isPunctuation(char character) {
    return std::string_view(".,;:!?\"-").find(character) != std::string_view::npos;
}

std::string spokenForm(std::string_view written) {
    while (!written.empty() && isPunctuation(written.front())) {
        written.remove_prefix(1);
    }
    while (!written.empty() && isPunctuation(written.back())) {
        written.remove_suffix(1);
    }
    std::string spoken(written);
    std::transform(spoken.begin(), spoken.end(), spoken.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                    : character;
    });
    return spoken;
}

/// Erases "[noise]" and "(laughs)", which may be several words.
void eraseSounds(std::vector<Word>& words) {
    char closing = 0;
    std::erase_if(words, [&closing](const Word& word) {
        if (closing == 0 && word.written.front() == '[') {
            closing = ']';
        } else if (closing == 0 && word.written.front() == '(') {
            closing = ')';
        }
        const bool isSound = closing != 0;
        if (isSound && word.written.find(closing) != std::string::npos) {
            closing = 0;
        }
        return isSound;
    });
}

}  // namespace

std::vector<Word> wordsOfWrittenText(const TextPieces& pieces) {
    std::vector<Word> words;
    bool isNewWord = true;
    for (const TextPiece& piece : pieces) {
        const std::string text = trimmed(piece.text);
        isNewWord = isNewWord || piece.text.starts_with(' ');
        if (text.empty()) {
            continue;
        }
        if (isNewWord) {
            words.push_back({"", piece.start, piece.end, piece.confidence, ""});
        }
        isNewWord = false;
        Word& word = words.back();
        word.written += text;
        word.end = std::max(word.end, piece.end);
        word.confidence = std::min(word.confidence, piece.confidence);
    }
    eraseSounds(words);
    for (Word& word : words) {
        word.text = spokenForm(word.written);
    }
    std::erase_if(words, [](const Word& word) { return word.text.empty(); });
    return words;
}

}  // namespace tarvik::service
