// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "speech-service/Utterance.h"

namespace tarvik::service {

/// The words of an utterance in written form. "I" and the names of days and months get capitals.
/// The start of a sentence gets a capital, and its end a full stop.
std::vector<std::string> writtenWords(const Utterance& utterance);

}  // namespace tarvik::service
