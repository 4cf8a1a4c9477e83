#pragma once

#include <cstddef>
#include <cstdint>

#include "base/Time.h"

namespace tarvik::service {

struct ServerOptions {
    /// 0 takes a free one.
    std::uint16_t port = 0;
    /// How long a client may send neither audio nor a KeepAlive message.
    Seconds idleTimeout{10};
    /// Each stream needs a decoder's memory and some of a processor.
    std::size_t mostStreams = 8;
};

}  // namespace tarvik::service
