// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "base/Time.h"
#include "speech-service/Utterance.h"

namespace tarvik::service {

/// The "Results" message of one utterance. With `punctuate` it has capitals and full stops.
std::string resultsMessage(const Utterance& utterance, bool punctuate,
                           const std::string& requestId);

/// The "Metadata" message at the end of a stream. `audio` is the total length of the audio.
/// `created` is the time of the stream's opening in ISO 8601.
std::string metadataMessage(Seconds audio, const std::string& created,
                            const std::string& requestId);

}  // namespace tarvik::service
