#include "platform/linux/audio/FrameCollector.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

FrameCollector::FrameCollector(std::uint32_t frameCount, const platform::AudioFormat& format,
                               platform::AudioTapBlock deliver)
    : capacity_(std::max(frameCount, 1U)),
      format_(format),
      deliver_(std::move(deliver)),
      samples_(std::size_t{capacity_} * format.channelCount) {
    for (std::size_t channel = 0; channel < format.channelCount; ++channel) {
        channels_.push_back(samples_.data() + channel * capacity_);
    }
}

void FrameCollector::append(const float* samples, std::size_t frameCount) {
    while (frameCount > 0) {
        const auto part =
            static_cast<std::uint32_t>(std::min<std::size_t>(frameCount, capacity_ - collected_));
        copy(samples, part);
        collected_ += part;
        frameCount -= part;
        if (samples != nullptr) {
            samples += std::size_t{part} * format_.channelCount;
        }
        if (collected_ == capacity_) {
            collected_ = 0;
            deliver_({channels_.data(), capacity_, format_});
        }
    }
}

void FrameCollector::copy(const float* samples, std::uint32_t frameCount) {
    const std::size_t channelCount = format_.channelCount;
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        float* target = samples_.data() + channel * capacity_ + collected_;
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
