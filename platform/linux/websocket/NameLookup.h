#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/linux/websocket/SerialThread.h"

namespace tarvik::linuxdesktop {

using LookupCompletion = std::function<void(Result<std::vector<boost::asio::ip::tcp::endpoint>>)>;

/// Finds the addresses of `host`, a name or an address, in the order in which the system prefers
/// them. `completion` comes on `thread`, for an address before the call returns; the call is made
/// there too. A lookup cannot be stopped, so it runs on a thread that nobody waits for, and its
/// completion is dropped if `thread` is gone by then.
void lookUpHost(SerialThread& thread, const std::string& host, std::uint16_t port,
                LookupCompletion completion);

}  // namespace tarvik::linuxdesktop
