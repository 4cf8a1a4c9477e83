// SPDX-License-Identifier: MIT

#include "speech-service/Server.h"

#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <iostream>
#include <system_error>

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

Server::Server(asio::io_context& context, const ServerOptions& options)
    : context_(context),
      serverContext_{asio::ssl::context(asio::ssl::context::tls_server),
                     options,
                     DecoderPool::create(),
                     {},
                     {}} {}

Server::~Server() {
    if (preparationThread_.joinable()) {
        preparationThread_.join();
    }
}

Result<std::unique_ptr<Server>> Server::create(asio::io_context& context,
                                               const ServerOptions& options,
                                               const CertificateFiles& certificates) {
    std::unique_ptr<Server> server(new Server(context, options));
    if (const error_code error = server->loadCertificates(certificates)) {
        return Error{error.value(), "The certificate cannot be used: " + error.message()};
    }
    error_code error = server->bind(options.port);
    for (int attempts = 1;
         options.port == 0 && error == asio::error::address_in_use && attempts < maxPortAttempts;
         ++attempts) {
        error = server->bind(0);
    }
    if (error) {
        return Error{error.value(), "The port " + std::to_string(options.port) +
                                        " cannot be listened on: " + error.message()};
    }
    for (const auto& acceptor : server->acceptors_) {
        server->accept(*acceptor);
    }
    server->prepareDecoder();
    return server;
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

void Server::prepareDecoder() {
    try {
        preparationThread_ = std::thread([decoders = serverContext_.decoders] {
            if (const std::optional<Error> error = decoders->prepare()) {
                std::cerr << error->localizedDescription + "\n";
            }
        });
    } catch (const std::system_error& error) {
        // The first stream loads the decoder instead.
        std::cerr << "there is no thread to load a decoder on: " + error.code().message() + "\n";
    }
}

void Server::stop() {
    for (const auto& acceptor : acceptors_) {
        error_code error;
        // Closing releases the descriptor even with an error.
        acceptor->close(error);
    }
    serverContext_.connections.goAway();
    serverContext_.streams.goAway();
}

}  // namespace tarvik::service
