#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <functional>
#include <optional>
#include <string>

#include "base/Error.h"
#include "platform/linux/websocket/ProxySettings.h"

namespace tarvik::linuxdesktop {

/// Asks the proxy at the other end of `socket` for a tunnel to `target` ("host:port"). `completion`
/// comes on the socket's thread, not inside this call; the socket must stay until then.
void openTunnel(boost::asio::ip::tcp::socket& socket, const Proxy& proxy, const std::string& target,
                std::function<void(std::optional<Error>)> completion);

}  // namespace tarvik::linuxdesktop
