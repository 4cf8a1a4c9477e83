// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>

namespace tarvik::service {

/// The size of a model. Encoder and decoder have the same one.
struct WhisperSize {
    /// A multiple of 64, which is the width of an attention head.
    std::int32_t width = 64;
    /// 4, 6, 12, 24 or 32: the library knows no other models.
    std::int32_t layers = 4;
    /// Numbers of 16 bits, as in models that people use. Otherwise 32 bits.
    bool isHalfPrecision = false;
};

/// Writes a model of whisper.cpp with random weights. The model understands nothing, but it loads
/// and runs, and takes the time and the memory of a real model of this size.
void writeRandomWhisperModel(const std::filesystem::path& path, const WhisperSize& size = {});

}  // namespace tarvik::service
