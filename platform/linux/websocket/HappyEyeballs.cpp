// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/HappyEyeballs.h"

#include <sys/socket.h>
#include <unistd.h>

#include <boost/asio/error.hpp>
#include <boost/asio/post.hpp>
#include <cerrno>
#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using boost::asio::ip::tcp;
using boost::system::error_code;

// The "Connection Attempt Delay" that RFC 8305 recommends.
constexpr std::chrono::milliseconds attemptDelay{250};

std::vector<tcp::endpoint> withAlternatingFamilies(const std::vector<tcp::endpoint>& endpoints) {
    std::vector<tcp::endpoint> preferred;
    std::vector<tcp::endpoint> others;
    for (const tcp::endpoint& endpoint : endpoints) {
        const bool isPreferred = endpoint.protocol() == endpoints.front().protocol();
        (isPreferred ? preferred : others).push_back(endpoint);
    }
    std::vector<tcp::endpoint> ordered;
    for (std::size_t index = 0; index < endpoints.size(); ++index) {
        if (index < preferred.size()) {
            ordered.push_back(preferred[index]);
        }
        if (index < others.size()) {
            ordered.push_back(others[index]);
        }
    }
    return ordered;
}

// Asio's own sockets are inherited by every program that this process starts.
error_code openPrivately(tcp::socket& socket, const tcp& protocol) {
    const int descriptor =
        ::socket(protocol.family(), protocol.type() | SOCK_CLOEXEC, protocol.protocol());
    if (descriptor < 0) {
        return {errno, boost::system::system_category()};
    }
    error_code error;
    socket.assign(protocol, descriptor, error);
    if (error) {
        close(descriptor);
    }
    return error;
}

}  // namespace

HappyEyeballs::HappyEyeballs(boost::asio::io_context& context, std::vector<tcp::endpoint> endpoints)
    : context_(context), endpoints_(withAlternatingFamilies(endpoints)), attemptTimer_(context) {
    // The addresses of the sockets must not change during their operations.
    attempts_.reserve(endpoints_.size());
}

void HappyEyeballs::start(ConnectHandler handler) {
    handler_ = std::move(handler);
    if (endpoints_.empty()) {
        boost::asio::post(context_, [self = shared_from_this()] {
            self->finish(boost::asio::error::host_not_found, tcp::socket(self->context_));
        });
        return;
    }
    startNext();
}

void HappyEyeballs::startNext() {
    attemptTimer_.cancel();
    const std::size_t index = attempts_.size();
    tcp::socket& socket = attempts_.emplace_back(context_);
    auto onResult = [self = shared_from_this(), index](error_code error) {
        self->onAttempt(index, error);
    };
    if (const error_code error = openPrivately(socket, endpoints_[index].protocol())) {
        boost::asio::post(context_, [onResult, error] { onResult(error); });
    } else {
        socket.async_connect(endpoints_[index], onResult);
    }
    if (attempts_.size() < endpoints_.size()) {
        startNextLater();
    }
}

void HappyEyeballs::startNextLater() {
    attemptTimer_.expires_after(attemptDelay);
    attemptTimer_.async_wait(
        [self = shared_from_this(), count = attempts_.size()](error_code error) {
            // A wait that has just ended cannot be cancelled any more. A refusal may have started
            // the next attempt meanwhile.
            if (!error && self->handler_ && self->attempts_.size() == count) {
                self->startNext();
            }
        });
}

void HappyEyeballs::onAttempt(std::size_t index, const error_code& error) {
    if (!handler_) {
        return;
    }
    if (!error) {
        finish({}, std::move(attempts_[index]));
        return;
    }
    ++failedCount_;
    if (failedCount_ == endpoints_.size()) {
        finish(error, tcp::socket(context_));
    } else if (failedCount_ == attempts_.size()) {
        startNext();
    }
}

void HappyEyeballs::finish(const error_code& error, tcp::socket socket) {
    if (const ConnectHandler handler = std::exchange(handler_, {})) {
        cancel();
        handler(error, std::move(socket));
    }
}

void HappyEyeballs::cancel() {
    handler_ = {};
    attemptTimer_.cancel();
    for (tcp::socket& socket : attempts_) {
        error_code ignored;  // Closing fails only for a socket that is closed already.
        socket.close(ignored);
    }
}

}  // namespace tarvik::linuxdesktop
