// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/AudioEngine.h"

namespace tarvik::linuxdesktop {

/// Collects interleaved frames of any number into buffers of one length with an array for each
/// channel. One thread at a time.
class DeinterleavingBuffer {
  public:
    /// Calls `onFull`, inside append(), for each `capacity` frames of `format`. A `capacity` of 0
    /// means 1.
    DeinterleavingBuffer(std::uint32_t capacity, const platform::AudioFormat& format,
                         platform::AudioTapBlock onFull);

    /// Adds `frameCount` interleaved frames, or as many frames of silence when `samples` is null.
    void append(const float* samples, std::size_t frameCount);

  private:
    void copy(const float* samples, std::uint32_t frameCount);

    std::uint32_t capacity_;
    platform::AudioFormat format_;
    platform::AudioTapBlock onFull_;
    std::vector<float> storage_;
    std::vector<const float*> channels_;
    std::uint32_t frameCount_ = 0;
};

}  // namespace tarvik::linuxdesktop
