// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarvik {

/// The transcript in a message of the speech service.
struct TranscriptMessage {
    /// Never empty; not trimmed.
    std::string text;
    /// Whether the service will not revise the text any more.
    bool isFinal = false;
};

/// Reads the transcript of the first alternative of a message's channel. `json` is UTF-8; only the
/// shape of the message counts, not its type. Any thread.
///
/// Nothing for malformed JSON, for any other shape and for an empty transcript. Nothing either for
/// JSON far beyond real messages, in any member: more than 512 levels or 1 MiB, an integer beyond
/// 64 bits, a number beyond a double, a leading byte order mark.
std::optional<TranscriptMessage> parseTranscriptMessage(std::string_view json);

}  // namespace tarvik
