#include "speech-service/Server.h"

#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <iostream>

namespace tarvik::service {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

namespace {

// A free port on one loopback address may be taken on the other.
constexpr int mostPortsTried = 20;
// Most reasons why nothing can be accepted, no free descriptor above all, last for a while.
constexpr std::chrono::milliseconds pauseAfterFailure{100};

bool isUnavailable(const error_code& error) {
    return error == asio::error::address_family_not_supported ||
           error == boost::system::errc::address_not_available;
}

}  // namespace

Server::Server(asio::io_context& context, const ServerOptions& options)
    : context_(context),
      shared_{asio::ssl::context(asio::ssl::context::tls_server),
              options,
              DecoderPool::create(),
              {},
              {}} {}

Server::~Server() {
    if (preparation_.joinable()) {
        preparation_.join();
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
    for (int tried = 1;
         options.port == 0 && error == asio::error::address_in_use && tried < mostPortsTried;
         ++tried) {
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
    SSL_CTX_set_min_proto_version(shared_.tls.native_handle(), TLS1_2_VERSION);
    shared_.tls.use_certificate_chain_file(certificates.server.string(), error);
    if (!error) {
        shared_.tls.use_private_key_file(certificates.serverKey.string(), asio::ssl::context::pem,
                                         error);
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
            acceptLater(acceptor);
            return;
        }
        const auto connection = std::make_shared<Connection>(std::move(socket), shared_);
        shared_.connections.add(connection);
        connection->start();
        accept(acceptor);
    });
}

void Server::acceptLater(tcp::acceptor& acceptor) {
    const auto pause = std::make_shared<asio::steady_timer>(context_, pauseAfterFailure);
    pause->async_wait([this, &acceptor, pause](error_code) { accept(acceptor); });
}

void Server::prepareDecoder() {
    preparation_ = std::thread([decoders = shared_.decoders] {
        if (const std::optional<Error> error = decoders->prepare()) {
            std::cerr << error->localizedDescription + "\n";
        }
    });
}

void Server::stop() {
    for (const auto& acceptor : acceptors_) {
        error_code error;
        // Closing releases the descriptor whatever it reports.
        acceptor->close(error);
    }
    shared_.connections.goAway();
    shared_.streams.goAway();
}

}  // namespace tarvik::service
