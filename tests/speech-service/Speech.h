#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarvik::service {

using Audio = std::vector<std::uint8_t>;

/// `text` spoken by a synthetic voice, as mono linear16 at `rate`, with `lead` seconds of silence
/// before and `tail` after. Throws when the voice or the converter is not installed.
Audio speech(const std::string& text, int rate, double lead, double tail);

/// Silence as mono linear16.
Audio silence(int rate, double seconds);

}  // namespace tarvik::service
