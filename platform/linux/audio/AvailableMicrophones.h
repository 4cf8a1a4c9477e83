// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "platform/linux/audio/Microphone.h"

namespace tarvik::linuxdesktop {

/// The microphones of a sound server.
struct AvailableMicrophones {
    /// The default source; empty when there is none or when the default source is a monitor.
    std::optional<Microphone> defaultMicrophone;
    /// Whether there is any microphone, the default one or another.
    bool hasAny = false;

    bool operator==(const AvailableMicrophones&) const = default;
};

}  // namespace tarvik::linuxdesktop
