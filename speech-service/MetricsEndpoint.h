// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/Result.h"

namespace tarvik::service {

/// Answers GET /metrics on the IPv4 loopback address, over HTTP without TLS.
///
/// All work happens on the thread that runs the io_context, which must outlive the endpoint.
class MetricsEndpoint {
  public:
    /// Binds `port`; 0 means any free port. `text` gives the metrics for one response.
    static Result<std::unique_ptr<MetricsEndpoint>> create(boost::asio::io_context& context,
                                                           std::uint16_t port,
                                                           std::function<std::string()> text);

    std::uint16_t port() const { return port_; }

    /// Stops accepting. A response that is on its way may still end.
    void stop();

  private:
    MetricsEndpoint(boost::asio::io_context& context, std::function<std::string()> text);
    void accept();

    boost::asio::ip::tcp::acceptor acceptor_;
    std::uint16_t port_ = 0;
    std::function<std::string()> text_;
};

}  // namespace tarvik::service
