#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/AudioEngine.h"

namespace tarvik::linuxdesktop {

/// Turns interleaved pieces of any length into buffers of one length with an array for each
/// channel. One thread at a time.
class FrameCollector {
  public:
    /// Collects `frameCount` frames (at least one) of `format` for each call of `deliver`.
    FrameCollector(std::uint32_t frameCount, const platform::AudioFormat& format,
                   platform::AudioTapBlock deliver);

    /// Adds frames, interleaved, or silence when `samples` is null, and delivers every full buffer.
    void append(const float* samples, std::size_t frameCount);

  private:
    void copy(const float* samples, std::uint32_t frameCount);

    std::uint32_t capacity_;
    platform::AudioFormat format_;
    platform::AudioTapBlock deliver_;
    std::vector<float> samples_;
    std::vector<const float*> channels_;
    std::uint32_t collected_ = 0;
};

}  // namespace tarvik::linuxdesktop
