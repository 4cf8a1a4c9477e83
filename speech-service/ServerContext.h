// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <memory>

#include "speech-service/ConnectionRegistry.h"
#include "speech-service/DecoderPool.h"
#include "speech-service/Metrics.h"
#include "speech-service/ServerOptions.h"

namespace tarvik::service {

/// The state that the connections of one server share.
struct ServerContext {
    boost::asio::ssl::context tls;
    ServerOptions options;
    std::size_t maxStreams = 0;
    std::shared_ptr<DecoderPool> decoders;
    /// Never expires. The destruction of a stream makes room, and ends the waits.
    std::shared_ptr<boost::asio::steady_timer> roomTimer;
    std::shared_ptr<Metrics> metrics = std::make_shared<Metrics>();
    ConnectionRegistry streams{};
    /// The connections that have not become a stream yet.
    ConnectionRegistry connections{};
};

}  // namespace tarvik::service
