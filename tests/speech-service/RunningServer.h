// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/io_context.hpp>
#include <filesystem>
#include <memory>
#include <thread>

#include "speech-service/Server.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::service {

/// The engine that the service has without any option.
std::shared_ptr<Engine> realEngine();

/// A server on a free port and a thread of its own. The destructor stops the server.
class RunningServer {
  public:
    explicit RunningServer(ServerOptions options = {},
                           std::shared_ptr<Engine> engine = realEngine());
    ~RunningServer();

    std::uint16_t port() const { return server_->port(); }
    std::uint16_t metricsPort() const { return server_->metricsPort(); }
    const std::filesystem::path& authority() const { return certificates_.authority; }

    /// Makes the server stop. Any thread.
    void stop();

    /// Waits for the end of the server. Harmless when repeated.
    void join();

  private:
    tests::TemporaryFolder folder_;
    CertificateFiles certificates_;
    boost::asio::io_context context_{1};
    std::unique_ptr<Server> server_;
    std::thread thread_;
};

}  // namespace tarvik::service
