// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "speech-service/TranscriptStyle.h"
#include "speech-service/Utterance.h"
#include "speech-service/WrittenWord.h"

namespace tarvik::service {

/// The words of an utterance in written form. With punctuation "I" and the names of days and months
/// get capitals; the start of a sentence gets a capital, and its end a full stop. Words that the
/// engine writes out itself stay as they are then.
std::vector<WrittenWord> writtenWords(const Utterance& utterance, const TranscriptStyle& style);

}  // namespace tarvik::service
