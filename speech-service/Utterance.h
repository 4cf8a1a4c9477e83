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
    /// Whether the client is told that speech has ended: after its endpointing pause, at its
    /// request and at the end of the stream.
    bool isSpeechFinal = false;
    /// Whether the words end a sentence. They do not before a hesitation and at a cut.
    bool isSentenceEnd = false;
    /// Whether the client requested the end of the utterance before a pause.
    bool isFromFinalize = false;
    /// Whether the words continue the sentence of the utterance before.
    bool isContinuation = false;
};

}  // namespace tarvik::service
