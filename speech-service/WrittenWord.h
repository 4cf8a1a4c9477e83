// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "speech-service/Word.h"

namespace tarvik::service {

/// A word of a transcript, or several that are written as one: "twenty three" is "23".
struct WrittenWord {
    /// As spoken. Several words are joined by spaces, and their confidence is the lowest.
    Word spoken;
    std::string written;
};

}  // namespace tarvik::service
