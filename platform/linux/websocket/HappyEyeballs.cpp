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

std::deque<tcp::endpoint> withAlternatingFamilies(const std::vector<tcp::endpoint>& endpoints) {
    std::vector<tcp::endpoint> preferred;
    std::vector<tcp::endpoint> others;
    for (const tcp::endpoint& endpoint : endpoints) {
        const bool isPreferred = endpoint.protocol() == endpoints.front().protocol();
        (isPreferred ? preferred : others).push_back(endpoint);
    }
    std::deque<tcp::endpoint> ordered;
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

HappyEyeballs::HappyEyeballs(boost::asio::io_context& context)
    : context_(context), lastError_(boost::asio::error::host_not_found), attemptTimer_(context) {}

void HappyEyeballs::startEarly(const tcp::endpoint& endpoint, EarlyHandler onConnected) {
    earlyEndpoint_ = endpoint;
    onEarlyConnected_ = std::move(onConnected);
    begin(endpoint);
}

void HappyEyeballs::start(const std::vector<tcp::endpoint>& endpoints, ConnectHandler handler) {
    handler_ = std::move(handler);
    untried_ = withAlternatingFamilies(endpoints);
    if (earlyEndpoint_ && std::erase(untried_, *earlyEndpoint_) == 0) {
        closeAttempts();
    }
    if (connectedEarly_) {
        postFinish({}, std::move(*std::exchange(connectedEarly_, nullptr)));
    } else if (!attempts_.empty()) {
        startNextLater();
    } else if (!untried_.empty()) {
        startNext();
    } else {
        postFinish(lastError_, tcp::socket(context_));
    }
}

void HappyEyeballs::begin(const tcp::endpoint& endpoint) {
    ++startCount_;
    lastStart_ = std::chrono::steady_clock::now();
    const auto attempt = std::make_shared<tcp::socket>(context_);
    attempts_.push_back(attempt);
    auto onResult = [self = shared_from_this(), attempt](error_code error) {
        self->onAttempt(attempt, error);
    };
    if (const error_code error = openPrivately(*attempt, endpoint.protocol())) {
        boost::asio::post(context_, [onResult, error] { onResult(error); });
    } else {
        attempt->async_connect(endpoint, onResult);
    }
}

void HappyEyeballs::startNext() {
    attemptTimer_.cancel();
    const tcp::endpoint endpoint = untried_.front();
    untried_.pop_front();
    begin(endpoint);
    startNextLater();
}

void HappyEyeballs::startNextLater() {
    if (untried_.empty()) {
        return;
    }
    attemptTimer_.expires_at(lastStart_ + attemptDelay);
    attemptTimer_.async_wait([self = shared_from_this(), count = startCount_](error_code error) {
        // A wait that has just ended cannot be cancelled any more. A refusal may have started the
        // next attempt meanwhile.
        if (!error && self->handler_ && self->startCount_ == count) {
            self->startNext();
        }
    });
}

void HappyEyeballs::onAttempt(const Attempt& attempt, const error_code& error) {
    if (std::erase(attempts_, attempt) == 0) {
        return;
    }
    if (error) {
        lastError_ = error;
    }
    if (!handler_ && !error && onEarlyConnected_) {
        earlyEndpoint_.reset();
        std::exchange(onEarlyConnected_, {})(std::move(*attempt));
    } else if (!handler_) {
        connectedEarly_ = error ? nullptr : attempt;
    } else if (!error) {
        finish({}, std::move(*attempt));
    } else if (attempts_.empty()) {
        untried_.empty() ? finish(error, tcp::socket(context_)) : startNext();
    }
}

void HappyEyeballs::postFinish(const error_code& error, tcp::socket socket) {
    boost::asio::post(context_, [self = shared_from_this(), error,
                                 socket = std::make_shared<tcp::socket>(std::move(socket))] {
        self->finish(error, std::move(*socket));
    });
}

void HappyEyeballs::finish(const error_code& error, tcp::socket socket) {
    if (const ConnectHandler handler = std::exchange(handler_, {})) {
        cancel();
        handler(error, std::move(socket));
    }
}

void HappyEyeballs::cancel() {
    handler_ = {};
    onEarlyConnected_ = {};
    attemptTimer_.cancel();
    closeAttempts();
}

void HappyEyeballs::closeAttempts() {
    connectedEarly_.reset();
    for (const Attempt& attempt : std::exchange(attempts_, {})) {
        error_code ignored;  // Closing fails only for a socket that is closed already.
        attempt->close(ignored);
    }
}

}  // namespace tarvik::linuxdesktop
