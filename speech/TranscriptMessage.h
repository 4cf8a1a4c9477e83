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
/// Nothing for a message of any other shape, without text, malformed, nested deeper than 512 levels
/// or longer than 1 MiB; no real message comes near those limits. Any thread.
std::optional<TranscriptMessage> parseTranscriptMessage(std::string_view json);

}  // namespace tarvik
