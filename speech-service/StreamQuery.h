// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "base/Result.h"

namespace tarvik::service {

/// The options that a client requests for its stream. The audio is always mono linear16.
struct StreamQuery {
    /// In hertz, 8000 to 192000.
    int sampleRate = 0;
    bool interimResults = false;
    /// Whether transcripts have capitals and full stops.
    bool punctuate = false;
};

/// Parses the query of a request's target: the percent-encoded text after the '?'.
///
/// Unknown parameters are ignored. The error describes the first bad parameter to the client.
Result<StreamQuery> parseStreamQuery(std::string_view query);

}  // namespace tarvik::service
