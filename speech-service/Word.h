// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "base/Time.h"

namespace tarvik::service {

/// One recognized word.
struct Word {
    /// As spoken: in lower case and without punctuation.
    std::string text;
    Seconds start{};
    Seconds end{};
    /// The recognizer's posterior probability, 0 to 1.
    double confidence = 0;
    /// As the engine writes the word, with capitals and punctuation. Empty if the engine gives
    /// spoken words only.
    std::string written{};
};

}  // namespace tarvik::service
