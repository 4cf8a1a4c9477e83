// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "base/Time.h"
#include "speech-service/Engine.h"
#include "speech-service/TranscriptStyle.h"
#include "speech-service/Utterance.h"

namespace tarvik::service {

/// The "Results" message of one utterance.
std::string resultsMessage(const Utterance& utterance, const TranscriptStyle& style,
                           const EngineInfo& engine, const std::string& requestId);

/// The "SpeechStarted" message. `time` counts from the start of the stream.
std::string speechStartedMessage(Seconds time);

/// The "UtteranceEnd" message. `lastWordEnd` counts from the start of the stream.
std::string utteranceEndMessage(Seconds lastWordEnd);

/// What the message at the end of a stream tells.
struct StreamSummary {
    std::string requestId;
    /// The time of the stream's opening in ISO 8601.
    std::string created;
    /// The total length of the audio, and the SHA-256 of its bytes in hexadecimal digits.
    Seconds duration{};
    std::string sha256;
};

/// The "Metadata" message at the end of a stream.
std::string metadataMessage(const StreamSummary& stream, const EngineInfo& engine);

}  // namespace tarvik::service
