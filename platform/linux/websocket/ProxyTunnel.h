// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <functional>
#include <optional>
#include <string>

#include "base/Error.h"
#include "platform/linux/websocket/ProxySettings.h"

namespace tarvik::linuxdesktop {

/// Sends CONNECT with `target` ("host:port") to the proxy that `socket` is connected to. `handler`
/// is called on the socket's thread, never inside this call, without an error when the tunnel is
/// open. `socket` must exist until then.
void openTunnel(boost::asio::ip::tcp::socket& socket, const Proxy& proxy, const std::string& target,
                std::function<void(std::optional<Error>)> handler);

}  // namespace tarvik::linuxdesktop
