// SPDX-License-Identifier: MIT

#include "platform/linux/audio/DeinterleavingBuffer.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

DeinterleavingBuffer::DeinterleavingBuffer(std::uint32_t capacity,
                                           const platform::AudioFormat& format,
                                           platform::AudioTapBlock onFull)
    : capacity_(std::max(capacity, 1U)),
      format_(format),
      onFull_(std::move(onFull)),
      storage_(std::size_t{capacity_} * format.channelCount) {
    for (std::size_t channel = 0; channel < format.channelCount; ++channel) {
        channels_.push_back(storage_.data() + channel * capacity_);
    }
}

void DeinterleavingBuffer::append(const float* samples, std::size_t frameCount) {
    while (frameCount > 0) {
        const auto part =
            static_cast<std::uint32_t>(std::min<std::size_t>(frameCount, capacity_ - frameCount_));
        copy(samples, part);
        frameCount_ += part;
        frameCount -= part;
        if (samples != nullptr) {
            samples += std::size_t{part} * format_.channelCount;
        }
        if (frameCount_ == capacity_) {
            frameCount_ = 0;
            onFull_({channels_.data(), capacity_, format_});
        }
    }
}

void DeinterleavingBuffer::copy(const float* samples, std::uint32_t frameCount) {
    const std::size_t channelCount = format_.channelCount;
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        float* target = storage_.data() + channel * capacity_ + frameCount_;
        if (samples == nullptr) {
            std::fill_n(target, frameCount, 0.0F);
            continue;
        }
        for (std::size_t frame = 0; frame < frameCount; ++frame) {
            target[frame] = samples[frame * channelCount + channel];
        }
    }
}

}  // namespace tarvik::linuxdesktop
