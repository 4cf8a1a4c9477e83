#pragma once

#include <string>
#include <vector>

#include "speech-service/Utterance.h"

namespace tarvik::service {

/// The words of an utterance as they are written: "I" and the names of days and months with
/// capitals, and as a sentence where the utterance begins and ends one.
std::vector<std::string> writtenWords(const Utterance& utterance);

}  // namespace tarvik::service
