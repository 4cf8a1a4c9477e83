// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "base/Time.h"
#include "speech-service/Word.h"

namespace tarvik::service {

/// A piece of a written text, which may be part of a word. A space begins a new word.
struct TextPiece {
    std::string text;
    Seconds start{};
    Seconds end{};
    double confidence = 0;
};
using TextPieces = std::vector<TextPiece>;

/// The words of a written text. What stands in brackets is a sound and no word. A word's confidence
/// is the lowest of its pieces. Its spoken form has no capitals and no punctuation around it.
std::vector<Word> wordsOfWrittenText(const TextPieces& pieces);

}  // namespace tarvik::service
