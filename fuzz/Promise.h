// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <cstdlib>

namespace tarvik::fuzz {

/// Ends the process, as a finding, when a promise of the code under test does not hold.
inline void promise(bool holds, const char* text) {
    if (!holds) {
        std::fprintf(stderr, "broken promise: %s\n", text);
        std::abort();
    }
}

}  // namespace tarvik::fuzz
