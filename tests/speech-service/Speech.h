// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarvik::service {

using Audio = std::vector<std::uint8_t>;

/// `text` in a synthetic voice, as mono linear16 at `rate` hertz. `lead` and `tail` are the seconds
/// of silence before and after. Throws when flite or sox fails.
Audio speech(const std::string& text, int rate, double lead, double tail);

/// Silence as mono linear16 at `rate` hertz.
Audio silence(int rate, double seconds);

}  // namespace tarvik::service
