// SPDX-License-Identifier: MIT
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

using LookupHandler = std::function<void(Result<std::vector<boost::asio::ip::tcp::endpoint>>)>;

/// Resolves `host`, a name or an address, to endpoints in the system's order of preference.
///
/// To be called on `thread`, where `handler` is called too. A name is resolved on a detached
/// thread, because a lookup cannot be cancelled. The handler is never called inside this call. The
/// handler is not called when `thread` has been destroyed or closed by then.
void lookUpHost(SerialThread& thread, const std::string& host, std::uint16_t port,
                LookupHandler handler);

}  // namespace tarvik::linuxdesktop
