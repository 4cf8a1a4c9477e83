// SPDX-License-Identifier: MIT

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "speech/TranscriptMessage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view json(reinterpret_cast<const char*>(data), size);
    const auto message = tarvik::parseTranscriptMessage(json);
    if (message && message->text.empty()) {
        std::abort();
    }
    return 0;
}
