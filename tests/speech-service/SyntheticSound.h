// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

namespace tarvik::service {

/// Samples at recognitionRate.
using Sound = std::vector<std::int16_t>;

Sound quiet(double seconds);

/// A buzz like that of the vocal cords, 120 Hz with harmonics. `level` in dB of full scale.
Sound voice(double seconds, double level = -20);

/// White noise. `level` is the effective value in dB of full scale.
Sound whiteNoise(double seconds, double level);

/// Noise whose power falls with the square of the frequency, as that of wind.
Sound brownNoise(double seconds, double level);

Sound operator+(Sound first, const Sound& second);

/// Both sounds at once. The result is as long as the first one.
Sound mixed(Sound first, const Sound& second);

}  // namespace tarvik::service
