// SPDX-License-Identifier: MIT

#include "speech-service/Server.h"

#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <iostream>

#include "speech-service/StreamLimit.h"

namespace tarvik::service {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

namespace {

// A free port on the IPv4 loopback address may be in use on the IPv6 one.
constexpr int maxPortAttempts = 20;
// The usual reasons for a failed accept, mainly a lack of descriptors, last for a while.
constexpr std::chrono::milliseconds acceptRetryInterval{100};

bool isUnavailable(const error_code& error) {
    return error == asio::error::address_family_not_supported ||
           error == boost::system::errc::address_not_available;
}

}  // namespace

Server::Server(asio::io_context& context, const ServerOptions& options,
               std::shared_ptr<Engine> engine)
    : context_(context),
      serverContext_{
          asio::ssl::context(asio::ssl::context::tls_server), options,
          options.maxStreams.value_or(maxStreamsHere(engine->info())),
          DecoderPool::create(std::move(engine)),
          std::make_shared<asio::steady_timer>(context, asio::steady_timer::time_point::max())},
      decoderTimer_(context) {}

Result<std::unique_ptr<Server>> Server::create(asio::io_context& context,
                                               const ServerOptions& options,
                                               const CertificateFiles& certificates,
                                               std::shared_ptr<Engine> engine) {
    std::unique_ptr<Server> server(new Server(context, options, std::move(engine)));
    if (std::optional<Error> error = server->serverContext_.decoders->prepare()) {
        return *std::move(error);
    }
    if (const error_code error = server->loadCertificates(certificates)) {
        return Error{error.value(), "The certificate cannot be used: " + error.message()};
    }
    if (std::optional<Error> error = server->open()) {
        return *std::move(error);
    }
    for (const auto& acceptor : server->acceptors_) {
        server->accept(*acceptor);
    }
    server->releaseDecodersLater();
    return server;
}

std::optional<Error> Server::open() {
    const ServerOptions& options = serverContext_.options;
    if (!options.sockets.empty()) {
        if (const error_code error = adopt(options.sockets)) {
            return Error{error.value(), "A passed socket cannot be used: " + error.message()};
        }
        return startMetrics();
    }
    error_code error = bind(options.port);
    for (int attempts = 1;
         options.port == 0 && error == asio::error::address_in_use && attempts < maxPortAttempts;
         ++attempts) {
        error = bind(0);
    }
    if (error) {
        return Error{error.value(), "The port " + std::to_string(options.port) +
                                        " cannot be listened on: " + error.message()};
    }
    return startMetrics();
}

std::optional<Error> Server::startMetrics() {
    if (!serverContext_.options.metricsPort) {
        return std::nullopt;
    }
    auto endpoint = MetricsEndpoint::create(
        context_, *serverContext_.options.metricsPort, [&context = serverContext_] {
            return context.metrics->text(context.streams.count(), context.maxStreams);
        });
    if (!endpoint) {
        return endpoint.error();
    }
    metrics_ = std::move(endpoint).value();
    return std::nullopt;
}

error_code Server::loadCertificates(const CertificateFiles& certificates) {
    error_code error;
    SSL_CTX_set_min_proto_version(serverContext_.tls.native_handle(), TLS1_2_VERSION);
    serverContext_.tls.use_certificate_chain_file(certificates.server.string(), error);
    if (!error) {
        serverContext_.tls.use_private_key_file(certificates.serverKey.string(),
                                                asio::ssl::context::pem, error);
    }
    return error;
}

error_code Server::bind(std::uint16_t port) {
    acceptors_.clear();
    if (const error_code error = listen({asio::ip::address_v4::loopback(), port})) {
        return error;
    }
    port_ = acceptors_.front()->local_endpoint().port();
    const error_code error = listen({asio::ip::address_v6::loopback(), port_});
    if (isUnavailable(error)) {
        std::cerr << "without IPv6: " + error.message() + "\n";
        return {};
    }
    return error;
}

error_code Server::listen(const tcp::endpoint& endpoint) {
    auto acceptor = std::make_unique<tcp::acceptor>(context_);
    error_code error;
    acceptor->open(endpoint.protocol(), error);
    if (!error) {
        acceptor->set_option(tcp::acceptor::reuse_address(true), error);
    }
    if (!error) {
        acceptor->bind(endpoint, error);
    }
    if (!error) {
        acceptor->listen(tcp::acceptor::max_listen_connections, error);
    }
    if (!error) {
        acceptors_.push_back(std::move(acceptor));
    }
    return error;
}

error_code Server::adopt(const std::vector<int>& sockets) {
    for (const int socket : sockets) {
        sockaddr_storage address{};
        socklen_t size = sizeof address;
        if (getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
            return {errno, boost::system::system_category()};
        }
        auto acceptor = std::make_unique<tcp::acceptor>(context_);
        error_code error;
        acceptor->assign(address.ss_family == AF_INET6 ? tcp::v6() : tcp::v4(), socket, error);
        if (error) {
            return error;
        }
        acceptors_.push_back(std::move(acceptor));
    }
    error_code error;
    port_ = acceptors_.front()->local_endpoint(error).port();
    return error;
}

void Server::accept(tcp::acceptor& acceptor) {
    acceptor.async_accept([this, &acceptor](error_code error, tcp::socket socket) {
        if (!acceptor.is_open()) {
            return;
        }
        if (error) {
            std::cerr << "a connection could not be accepted: " + error.message() + "\n";
            retryAccept(acceptor);
            return;
        }
        const auto connection = std::make_shared<Connection>(std::move(socket), serverContext_);
        serverContext_.connections.add(connection);
        connection->start();
        accept(acceptor);
    });
}

void Server::retryAccept(tcp::acceptor& acceptor) {
    const auto timer = std::make_shared<asio::steady_timer>(context_, acceptRetryInterval);
    timer->async_wait([this, &acceptor, timer](error_code) { accept(acceptor); });
}

void Server::releaseDecodersLater() {
    const Seconds timeout = serverContext_.options.decoderTimeout;
    decoderTimer_.expires_after(
        std::chrono::duration_cast<std::chrono::steady_clock::duration>(timeout / 4));
    decoderTimer_.async_wait([this, timeout](error_code error) {
        if (!error) {
            serverContext_.decoders->releaseIdle(timeout);
            releaseDecodersLater();
        }
    });
}

void Server::stop() {
    for (const auto& acceptor : acceptors_) {
        error_code error;
        // Closing releases the descriptor even with an error.
        acceptor->close(error);
    }
    if (metrics_) {
        metrics_->stop();
    }
    decoderTimer_.cancel();
    serverContext_.connections.goAway();
    serverContext_.streams.goAway();
}

}  // namespace tarvik::service
