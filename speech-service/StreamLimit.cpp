// SPDX-License-Identifier: MIT

#include "speech-service/StreamLimit.h"

#include <unistd.h>

#include <algorithm>
#include <thread>

namespace tarvik::service {

std::size_t maxStreamsOn(unsigned cores, std::size_t memory, const EngineInfo& engine) {
    const auto byCores =
        static_cast<std::size_t>(std::max(1U, cores) * std::max(0.0, engine.streamsPerCore));
    const std::size_t byMemory = memory / 2 / std::max<std::size_t>(1, engine.decoderMemory);
    return std::max<std::size_t>(1, std::min(byCores, byMemory));
}

std::size_t maxStreamsHere(const EngineInfo& engine) {
    const auto pages = static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES));
    const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return maxStreamsOn(std::thread::hardware_concurrency(), pages * pageSize, engine);
}

}  // namespace tarvik::service
