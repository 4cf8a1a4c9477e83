#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "base/Result.h"

struct SRC_STATE_tag;

namespace tarvik::service {

/// The rate that the recognizer listens at, in hertz.
inline constexpr int recognitionRate = 16000;

/// Brings one stream of audio to the recognizer's rate; it remembers the end of each piece, so the
/// pieces join without a seam.
class Resampler {
  public:
    /// `inputRate` in hertz, 8000 to 192000.
    static Result<Resampler> create(int inputRate);

    /// The output that `samples` (±1) completes; a few milliseconds stay inside for the next call.
    std::vector<std::int16_t> process(std::span<const float> samples);

    /// What stayed inside, at the end of the stream; nothing may follow.
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
