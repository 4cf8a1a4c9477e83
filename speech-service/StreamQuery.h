// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "base/Result.h"
#include "speech-service/RecognitionOptions.h"
#include "speech-service/TranscriptStyle.h"

namespace tarvik::service {

/// The options that a client requests for its stream. The audio is always mono linear16.
struct StreamQuery {
    /// In hertz, 8000 to 192000.
    int sampleRate = 0;
    RecognitionOptions recognition;
    TranscriptStyle style;
};

/// Parses the query of a request's target: the percent-encoded text after the '?'.
///
/// Unknown parameters are ignored, except those that ask for what is not done here. The error
/// describes the first bad parameter to the client.
Result<StreamQuery> parseStreamQuery(std::string_view query);

}  // namespace tarvik::service
