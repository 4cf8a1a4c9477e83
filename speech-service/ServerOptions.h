// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/Time.h"

namespace tarvik::service {

/// The settings of a server.
struct ServerOptions {
    /// 0 means any free port.
    std::uint16_t port = 0;
    /// The maximum time without audio and KeepAlive messages.
    Seconds idleTimeout{10};
    /// The maximum time without audio, KeepAlive messages or not.
    Seconds audioTimeout{60};
    /// Each stream needs the memory of a decoder and part of a processor.
    std::size_t maxStreams = 8;
};

}  // namespace tarvik::service
