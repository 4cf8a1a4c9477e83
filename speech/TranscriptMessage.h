#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarvik {

/// What a message of the speech service says that was spoken.
struct TranscriptMessage {
    /// Never empty; not trimmed.
    std::string text;
    /// The text will not be revised any more.
    bool isFinal = false;
};

/// Reads a message (JSON, UTF-8) by its shape alone: the transcript of its channel's first
/// alternative.
///
/// Nothing for a message of any other shape, without text, or malformed. Nothing either for what no
/// real message comes near, in whichever member it is: more than 512 levels or 1 MiB, an integer
/// beyond 64 bits, a real number beyond a double, a byte order mark in front. Any thread.
std::optional<TranscriptMessage> parseTranscriptMessage(std::string_view json);

}  // namespace tarvik
