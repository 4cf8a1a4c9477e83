// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "base/Time.h"

namespace tarvik::service {

/// How a stream is divided into utterances, and what is reported of them.
struct RecognitionOptions {
    bool interimResults = false;
    /// The pause that ends speech. Without a value no utterance is the end of speech.
    std::optional<Seconds> endpointing = Seconds(1);
    /// Reports when no word came for this long.
    std::optional<Seconds> utteranceEnd;
    /// Reports when speech begins.
    bool speechEvents = false;
};

}  // namespace tarvik::service
