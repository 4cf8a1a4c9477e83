// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "base/Time.h"
#include "speech-service/Word.h"

namespace tarvik::service {

/// The recognized words of one stretch of speech. Times count from the start of the stream.
struct Utterance {
    std::vector<Word> words;
    Seconds start{};
    Seconds duration{};
    /// Whether the words are final. Interim words may change.
    bool isFinal = false;
    /// Whether the utterance ends with a pause or with the request of the client.
    bool isSpeechFinal = false;
    /// Whether the client requested the end of the utterance before a pause.
    bool isFromFinalize = false;
    /// Whether the utterance continues speech that was cut without a pause.
    bool isContinuation = false;
};

}  // namespace tarvik::service
