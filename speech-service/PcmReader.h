// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tarvik::service {

/// Reads samples from chunks of bytes. A sample may span two chunks.
class PcmReader {
  public:
    /// The samples that `bytes` completes, scaled to ±1. The input is signed 16-bit little-endian.
    std::vector<float> read(std::span<const std::uint8_t> bytes);

  private:
    std::optional<std::uint8_t> lowByte_;
};

}  // namespace tarvik::service
