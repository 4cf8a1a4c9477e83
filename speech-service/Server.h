// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "base/Result.h"
#include "speech-service/CertificateFiles.h"
#include "speech-service/Connection.h"
#include "speech-service/MetricsEndpoint.h"
#include "speech-service/ServerOptions.h"

namespace tarvik::service {

/// The speech service: streams over TLS on the loopback addresses.
///
/// All work happens on the thread that runs the io_context. After stop(), the run ends when every
/// stream is closed. The server may be destroyed only after that.
class Server {
  public:
    /// Loads a decoder, which blocks for some tenths of a second, and binds the port or takes the
    /// sockets of `options`. The server accepts connections while `context` runs. `context` must
    /// outlive the server.
    static Result<std::unique_ptr<Server>> create(boost::asio::io_context& context,
                                                  const ServerOptions& options,
                                                  const CertificateFiles& certificates,
                                                  std::shared_ptr<Engine> engine);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// The port of the first socket.
    std::uint16_t port() const { return port_; }

    /// The port of the metrics. 0 without metrics.
    std::uint16_t metricsPort() const { return metrics_ ? metrics_->port() : std::uint16_t{0}; }

    /// Stops accepting and closes the open streams with 1001. On the context's thread.
    void stop();

  private:
    Server(boost::asio::io_context& context, const ServerOptions& options,
           std::shared_ptr<Engine> engine);
    std::optional<Error> open();
    boost::system::error_code loadCertificates(const CertificateFiles& certificates);
    boost::system::error_code bind(std::uint16_t port);
    boost::system::error_code listen(const boost::asio::ip::tcp::endpoint& endpoint);
    void accept(boost::asio::ip::tcp::acceptor& acceptor);
    void retryAccept(boost::asio::ip::tcp::acceptor& acceptor);
    boost::system::error_code adopt(const std::vector<int>& sockets);
    std::optional<Error> startMetrics();
    void releaseDecodersLater();

    boost::asio::io_context& context_;
    ServerContext serverContext_;
    std::vector<std::unique_ptr<boost::asio::ip::tcp::acceptor>> acceptors_;
    std::uint16_t port_ = 0;
    std::unique_ptr<MetricsEndpoint> metrics_;
    boost::asio::steady_timer decoderTimer_;
};

}  // namespace tarvik::service
