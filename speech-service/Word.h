// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "base/Time.h"

namespace tarvik::service {

/// One recognized word, in lower case and without markup.
struct Word {
    std::string text;
    Seconds start{};
    Seconds end{};
    /// The recognizer's posterior probability, 0 to 1.
    double confidence = 0;
};

}  // namespace tarvik::service
