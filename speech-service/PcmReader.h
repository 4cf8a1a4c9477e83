#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tarvik::service {

/// Puts samples together from a stream of bytes that may be cut anywhere, inside a sample too.
class PcmReader {
  public:
    /// The signed 16-bit little-endian samples that `bytes` completes, scaled to ±1.
    std::vector<float> read(std::span<const std::uint8_t> bytes);

  private:
    std::optional<std::uint8_t> lowByte_;
};

}  // namespace tarvik::service
