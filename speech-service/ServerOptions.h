// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/Time.h"

namespace tarvik::service {

/// The settings of a server.
struct ServerOptions {
    /// 0 means any free port.
    std::uint16_t port = 0;
    /// Listening sockets, which the server takes and closes. `port` has no meaning with them.
    std::vector<int> sockets;
    /// The port of the metrics on the IPv4 loopback address; 0 means any free port.
    std::optional<std::uint16_t> metricsPort;
    /// The maximum time from the acceptance of a connection to its stream or refusal.
    Seconds handshakeTimeout{10};
    /// The maximum time without audio and KeepAlive messages.
    Seconds idleTimeout{10};
    /// The maximum time without audio, KeepAlive messages or not.
    Seconds audioTimeout{60};
    /// The time after a CloseStream message at which a live stream has its words, as far as they
    /// are known. Clients hang up after 2 s.
    Seconds closeDeadline{1.5};
    /// Each stream needs the memory of a decoder and part of a processor. Without a value the
    /// engine's needs and this machine decide.
    std::optional<std::size_t> maxStreams;
    /// The keys that open streams. Without any, every key does.
    std::set<std::string, std::less<>> keys;
    /// The HTTP status that refuses every stream, for trying out a client.
    std::optional<int> refusal;
    /// A decoder that nobody needed for so long is freed, except the last one.
    Seconds decoderTimeout{60};
};

}  // namespace tarvik::service
