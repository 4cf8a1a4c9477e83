// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/KnownAddresses.h"

namespace tarvik::linuxdesktop {

std::optional<boost::asio::ip::tcp::endpoint> KnownAddresses::find(
    const std::string& destination) const {
    const std::lock_guard lock(mutex_);
    const auto found = endpoints_.find(destination);
    return found == endpoints_.end() ? std::nullopt : std::optional(found->second);
}

void KnownAddresses::remember(const std::string& destination,
                              const boost::asio::ip::tcp::endpoint& endpoint) {
    const std::lock_guard lock(mutex_);
    endpoints_[destination] = endpoint;
}

}  // namespace tarvik::linuxdesktop
