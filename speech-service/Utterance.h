#pragma once

#include <vector>

#include "base/Time.h"
#include "speech-service/Word.h"

namespace tarvik::service {

/// What was understood of one stretch of speech; all times count from the beginning of the stream.
struct Utterance {
    std::vector<Word> words;
    Seconds start{};
    Seconds duration{};
    /// The words stand; otherwise they are a first guess that may change.
    bool isFinal = false;
    /// The speaker paused here.
    bool isSpeechFinal = false;
    /// The client asked for it before the speaker had paused.
    bool isFromFinalize = false;
    /// It begins where a cut through longer speech was made, not after a pause.
    bool isContinuation = false;
};

}  // namespace tarvik::service
