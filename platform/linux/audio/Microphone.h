// SPDX-License-Identifier: MIT
#pragma once

#include <pulse/pulseaudio.h>

#include <cstdint>
#include <string>

namespace tarvik::linuxdesktop {

/// A source of the sound server that is not the monitor of a sink.
struct Microphone {
    /// The server's index of the source, never reused while the server runs.
    std::uint32_t index = PA_INVALID_INDEX;
    std::string name;
    /// Hertz.
    std::uint32_t sampleRate = 0;
    pa_channel_map channels{};

    /// Whether `other` is the same source, perhaps at another rate.
    bool isSameSource(const Microphone& other) const {
        return index == other.index && name == other.name &&
               pa_channel_map_equal(&channels, &other.channels) != 0;
    }
    bool operator==(const Microphone& other) const {
        return isSameSource(other) && sampleRate == other.sampleRate;
    }
};

}  // namespace tarvik::linuxdesktop
