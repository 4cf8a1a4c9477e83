#pragma once

#include <boost/asio/io_context.hpp>
#include <filesystem>
#include <memory>
#include <thread>

#include "speech-service/Server.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::service {

/// The service on a free port, on a thread of its own, for as long as the object lives.
class RunningServer {
  public:
    explicit RunningServer(ServerOptions options = {});
    ~RunningServer();

    std::uint16_t port() const { return server_->port(); }
    const std::filesystem::path& authority() const { return certificates_.authority; }

    /// Has the service end, from another thread than its own.
    void stop();

    /// Waits until it has ended.
    void join();

  private:
    tests::TemporaryFolder folder_;
    CertificateFiles certificates_;
    boost::asio::io_context context_{1};
    std::unique_ptr<Server> server_;
    std::thread thread_;
};

}  // namespace tarvik::service
