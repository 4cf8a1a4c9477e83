// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "speech-service/Engine.h"

namespace tarvik::service {

/// The number of streams that a machine with these `cores` and `memory` bytes decodes as fast as
/// people speak. At least 1. Streams get half of the memory at the most.
std::size_t maxStreamsOn(unsigned cores, std::size_t memory, const EngineInfo& engine);

/// The same for this machine.
std::size_t maxStreamsHere(const EngineInfo& engine);

}  // namespace tarvik::service
