// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace tarvik::linuxdesktop {

/// The address at which each host was reached last, in memory only. Any thread.
class KnownAddresses {
  public:
    /// The last address of `destination` ("host:port"); empty before the first connection.
    std::optional<boost::asio::ip::tcp::endpoint> find(const std::string& destination) const;
    void remember(const std::string& destination, const boost::asio::ip::tcp::endpoint& endpoint);

  private:
    mutable std::mutex mutex_;
    std::map<std::string, boost::asio::ip::tcp::endpoint> endpoints_;
};

}  // namespace tarvik::linuxdesktop
