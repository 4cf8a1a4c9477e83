// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "speech-service/WrittenWord.h"

namespace tarvik::service {

/// Writes the English numbers among `words` in figures: numbers from 10 and years, numbers with a
/// unit ("5%", "$3.50"), times ("3:30 PM"), dates ("July 4th"), decimals and spelled digits. Small
/// numbers without a unit stay words, as in running text.
std::vector<WrittenWord> withFigures(const std::vector<WrittenWord>& words);

}  // namespace tarvik::service
