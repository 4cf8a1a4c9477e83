// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tarvik::simulated {

/// A message of the speech service with this transcript. `text` must not need JSON escapes.
inline std::string transcriptJson(const std::string& text, bool isFinal) {
    return R"({"type":"Results","channel":{"alternatives":[{"transcript":")" + text +
           R"(","confidence":0.98}]},"is_final":)" + (isFinal ? "true" : "false") + "}";
}

}  // namespace tarvik::simulated
