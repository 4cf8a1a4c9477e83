// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "base/Result.h"

struct SRC_STATE_tag;

namespace tarvik::service {

/// The sample rate of the recognizer in hertz.
inline constexpr int recognitionRate = 16000;

/// Converts one stream of audio to the recognizer's rate. The filter's state carries over, so the
/// chunks join without a seam.
class Resampler {
  public:
    /// `inputRate` in hertz, 8000 to 192000.
    static Result<Resampler> create(int inputRate);

    /// The output for `samples` (±1), except a few milliseconds that stay in the filter.
    std::vector<std::int16_t> process(std::span<const float> samples);

    /// The rest of the output at the end of the stream. No call may follow.
    std::vector<std::int16_t> finish();

  private:
    struct Deleter {
        void operator()(SRC_STATE_tag* state) const;
    };

    Resampler(SRC_STATE_tag* state, int inputRate);
    std::vector<std::int16_t> convert(std::span<const float> samples, bool isLast);

    std::unique_ptr<SRC_STATE_tag, Deleter> state_;
    int inputRate_;
};

}  // namespace tarvik::service
