#pragma once

#include <string>
#include <string_view>

#include "base/Result.h"

namespace tarvik::service {

/// What a client asks of its stream. The audio is always mono linear16.
struct StreamQuery {
    /// In hertz, 8000 to 192000.
    int sampleRate = 0;
    bool interimResults = false;
    /// Write transcripts with capitals and full stops.
    bool punctuate = false;
};

/// Reads the query part of a request's target (what follows the '?', percent-encoded).
///
/// Parameters that this service does not know are ignored. The error says what is wrong with the
/// first bad parameter, in words for the client.
Result<StreamQuery> parseStreamQuery(std::string_view query);

}  // namespace tarvik::service
