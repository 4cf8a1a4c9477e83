#include "platform/linux/websocket/AddressRace.h"

#include <boost/asio/error.hpp>
#include <boost/asio/post.hpp>
#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using boost::asio::ip::tcp;
using boost::system::error_code;

// The connection attempt delay that RFC 8305 recommends.
constexpr std::chrono::milliseconds attemptDelay{250};

std::vector<tcp::endpoint> withFamiliesInTurns(const std::vector<tcp::endpoint>& endpoints) {
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

}  // namespace

AddressRace::AddressRace(boost::asio::io_context& context, std::vector<tcp::endpoint> endpoints)
    : context_(context), endpoints_(withFamiliesInTurns(endpoints)), nextAttempt_(context) {
    // Attempts hold references to their elements.
    attempts_.reserve(endpoints_.size());
}

void AddressRace::start(Completion completion) {
    completion_ = std::move(completion);
    if (endpoints_.empty()) {
        boost::asio::post(context_, [self = shared_from_this()] {
            self->finish(boost::asio::error::host_not_found, tcp::socket(self->context_));
        });
        return;
    }
    startNext();
}

void AddressRace::startNext() {
    const std::size_t index = attempts_.size();
    tcp::socket& socket = attempts_.emplace_back(context_);
    socket.async_connect(endpoints_[index], [self = shared_from_this(), index](error_code failure) {
        self->onAttempt(index, failure);
    });
    if (attempts_.size() == endpoints_.size()) {
        return;
    }
    nextAttempt_.expires_after(attemptDelay);
    nextAttempt_.async_wait([self = shared_from_this()](error_code failure) {
        if (!failure && self->completion_) {
            self->startNext();
        }
    });
}

void AddressRace::onAttempt(std::size_t index, const error_code& failure) {
    if (!completion_) {
        return;
    }
    if (!failure) {
        finish({}, std::move(attempts_[index]));
        return;
    }
    ++failures_;
    if (failures_ == endpoints_.size()) {
        finish(failure, tcp::socket(context_));
    } else if (failures_ == attempts_.size()) {
        startNext();
    }
}

void AddressRace::finish(const error_code& failure, tcp::socket socket) {
    if (const Completion completion = std::exchange(completion_, {})) {
        cancel();
        completion(failure, std::move(socket));
    }
}

void AddressRace::cancel() {
    completion_ = {};
    nextAttempt_.cancel();
    for (tcp::socket& socket : attempts_) {
        error_code ignored;  // A socket that cannot be closed was closed already.
        socket.close(ignored);
    }
}

}  // namespace tarvik::linuxdesktop
