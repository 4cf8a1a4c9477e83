// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "base/Result.h"
#include "speech-service/CertificateFiles.h"
#include "speech-service/Connection.h"
#include "speech-service/ServerOptions.h"

namespace tarvik::service {

/// The speech service: streams over TLS on the loopback addresses.
///
/// All work happens on the thread that runs the io_context. After stop(), the run ends when every
/// stream is closed. The server may be destroyed only after that.
class Server {
  public:
    /// Binds the port and starts to load a decoder on a thread. The server accepts connections
    /// while `context` runs. `context` must outlive the server.
    static Result<std::unique_ptr<Server>> create(boost::asio::io_context& context,
                                                  const ServerOptions& options,
                                                  const CertificateFiles& certificates);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::uint16_t port() const { return port_; }

    /// Stops accepting and closes the open streams with 1001. On the context's thread.
    void stop();

  private:
    Server(boost::asio::io_context& context, const ServerOptions& options);
    boost::system::error_code loadCertificates(const CertificateFiles& certificates);
    boost::system::error_code bind(std::uint16_t port);
    boost::system::error_code listen(const boost::asio::ip::tcp::endpoint& endpoint);
    void accept(boost::asio::ip::tcp::acceptor& acceptor);
    void retryAccept(boost::asio::ip::tcp::acceptor& acceptor);
    void prepareDecoder();

    boost::asio::io_context& context_;
    ServerContext serverContext_;
    std::vector<std::unique_ptr<boost::asio::ip::tcp::acceptor>> acceptors_;
    std::uint16_t port_ = 0;
    std::thread preparationThread_;
};

}  // namespace tarvik::service
