// SPDX-License-Identifier: MIT

#include "speech-service/Connection.h"

#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <iostream>
#include <utility>

#include "base/Weakly.h"

namespace tarvik::service {

namespace beast = boost::beast;
namespace ssl = boost::asio::ssl;

namespace {

std::string newRequestId() {
    return to_string(boost::uuids::random_generator()());
}

}  // namespace

Connection::Connection(boost::asio::ip::tcp::socket socket, ServerContext& context)
    : context_(context),
      socket_(std::move(socket), context.tls),
      timeoutTimer_(socket_.get_executor()) {}

void Connection::start() {
    startTimeout();
    socket_.next_layer().async_handshake(
        ssl::stream_base::server,
        beast::bind_front_handler(&Connection::onTlsHandshake, shared_from_this()));
}

void Connection::startTimeout() {
    timeoutTimer_.expires_after(std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        context_.options.handshakeTimeout));
    timeoutTimer_.async_wait(weakly(*this, [](Connection& self, beast::error_code error) {
        if (!error) {
            self.onTimeout();
        }
    }));
}

void Connection::onTimeout() {
    if (isWaitingForRoom_) {
        startTimeout();
        refuseForLackOfRoom();
    } else {
        abort();
    }
}

void Connection::onTlsHandshake(beast::error_code error) {
    if (error) {
        std::cerr << "a client came without TLS or does not trust the certificate: " +
                         error.message() + "\n";
        return;
    }
    beast::http::async_read_header(
        socket_, incoming_, parser_,
        [self = shared_from_this()](beast::error_code readError, std::size_t) {
            self->onRequest(readError);
        });
}

void Connection::onRequest(beast::error_code error) {
    if (error.category() ==
            beast::http::make_error_code(beast::http::error::bad_method).category() &&
        error != beast::http::error::end_of_stream) {
        const Error reason{400, "The request cannot be read: " + error.message()};
        answer(reason, refusalOfUnreadableRequest(reason, newRequestId()));
        return;
    }
    if (error) {
        // A connection without a request is a check for the service, not an error.
        return;
    }
    Result<Handshake> handshake = checkHandshake(parser_.get(), context_.options);
    if (!handshake) {
        refuse(handshake.error());
        return;
    }
    handshake_ = std::move(handshake).value();
    admit();
}

void Connection::admit() {
    if (context_.streams.count() < context_.maxStreams) {
        upgradeToStream();
    } else if (context_.streams.openCount() < context_.maxStreams) {
        waitForRoom();
    } else {
        refuseForLackOfRoom();
    }
}

// A stream whose client is gone keeps its decoder until the decoding thread takes notice.
void Connection::waitForRoom() {
    isWaitingForRoom_ = true;
    context_.roomTimer->async_wait([self = shared_from_this()](beast::error_code) {
        const bool isOpen = beast::get_lowest_layer(self->socket_).is_open();
        if (std::exchange(self->isWaitingForRoom_, false) && isOpen) {
            self->admit();
        }
    });
}

void Connection::upgradeToStream() {
    timeoutTimer_.cancel();
    const auto stream = std::make_shared<Stream>(std::move(socket_), std::move(handshake_),
                                                 newRequestId(), context_);
    context_.streams.add(stream);
    context_.metrics->addStream();
    stream->accept(parser_.get());
}

void Connection::refuseForLackOfRoom() {
    isWaitingForRoom_ = false;
    refuse({429, "Too many streams are open; this service serves " +
                     std::to_string(context_.maxStreams) + " at once"});
}

void Connection::refuse(const Error& error) {
    answer(error, refusal(parser_.get(), error, newRequestId()));
}

void Connection::answer(const Error& error, Response response) {
    std::cerr << "a request was refused with " + std::to_string(error.code) + ": " +
                     error.localizedDescription + "\n";
    context_.metrics->addRefusal();
    response_ = std::move(response);
    beast::http::async_write(
        socket_, response_, [self = shared_from_this()](beast::error_code, std::size_t) {
            // With or without an error, only the TLS shutdown is left.
            self->socket_.next_layer().async_shutdown([self](beast::error_code) {});
        });
}

void Connection::goAway() {
    abort();
}

void Connection::abort() {
    beast::error_code ignored;  // Closing fails only for a socket that is closed already.
    beast::get_lowest_layer(socket_).close(ignored);
}

}  // namespace tarvik::service
