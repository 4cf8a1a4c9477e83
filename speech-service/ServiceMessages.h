#pragma once

#include <string>

#include "base/Time.h"
#include "speech-service/Utterance.h"

namespace tarvik::service {

/// A "Results" message: one utterance, written with capitals and full stops if `punctuate`.
std::string resultsMessage(const Utterance& utterance, bool punctuate,
                           const std::string& requestId);

/// The "Metadata" message that ends a stream. `audio` is the length of all audio that came in,
/// `created` the time of the stream's opening in ISO 8601.
std::string metadataMessage(Seconds audio, const std::string& created,
                            const std::string& requestId);

}  // namespace tarvik::service
