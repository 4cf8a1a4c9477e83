// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace tarvik::service {

/// Writes a small model file with random weights in the ggml format. The model says nonsense.
void writeRandomWhisperModel(const std::filesystem::path& path);

}  // namespace tarvik::service
