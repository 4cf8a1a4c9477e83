// SPDX-License-Identifier: MIT

#include "tests/linux/websocket/Listener.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace tarvik::tests {

namespace {

constexpr int acceptTimeoutMilliseconds = 10'000;

union SocketAddress {
    sockaddr any;
    sockaddr_in v4;
    sockaddr_in6 v6;
};

SocketAddress makeAddress(const std::string& address, std::uint16_t port) {
    SocketAddress made{};
    if (address.find(':') != std::string::npos) {
        made.v6.sin6_family = AF_INET6;
        made.v6.sin6_port = htons(port);
        inet_pton(AF_INET6, address.c_str(), &made.v6.sin6_addr);
    } else {
        made.v4.sin_family = AF_INET;
        made.v4.sin_port = htons(port);
        inet_pton(AF_INET, address.c_str(), &made.v4.sin_addr);
    }
    return made;
}

bool isReady(int socket, short what, int milliseconds) {
    pollfd wait{socket, what, 0};
    return ::poll(&wait, 1, milliseconds) == 1;
}

}  // namespace

Listener::Listener(const std::string& address, std::uint16_t port, bool hasFullBacklog) {
    SocketAddress local = makeAddress(address, port);
    socklen_t size = sizeof local;
    socket_ = ::socket(local.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    constexpr int yes = 1;
    ::setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (socket_ < 0 || ::bind(socket_, &local.any, size) != 0 ||
        ::listen(socket_, hasFullBacklog ? 0 : 16) != 0 ||
        ::getsockname(socket_, &local.any, &size) != 0) {
        throw std::runtime_error("No listening socket on " + address);
    }
    port_ = ntohs(local.any.sa_family == AF_INET6 ? local.v6.sin6_port : local.v4.sin_port);
    if (hasFullBacklog) {
        fillBacklog();
    }
}

// Fills the queue of connections that wait for accept(). The kernel ignores further attempts.
void Listener::fillBacklog() {
    constexpr int maxClients = 16;
    for (int count = 0; count < maxClients; ++count) {
        SocketAddress target{};
        socklen_t size = sizeof target;
        ::getsockname(socket_, &target.any, &size);
        const int client =
            ::socket(target.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        backlog_.push_back(client);
        ::connect(client, &target.any, size);
        constexpr int connectTimeoutMilliseconds = 100;
        if (!isReady(client, POLLOUT, connectTimeoutMilliseconds)) {
            return;
        }
    }
    throw std::runtime_error("The listening socket takes everything in");
}

void Listener::emptyBacklog() {
    for (const int client : backlog_) {
        ::close(client);
    }
    backlog_.clear();
    while (hasConnection()) {
        ::close(::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC));
    }
}

Listener::~Listener() {
    for (const int client : backlog_) {
        ::close(client);
    }
    ::close(socket_);
}

bool Listener::hasConnection() const {
    return isReady(socket_, POLLIN, 0);
}

Peer Listener::accept() {
    if (!isReady(socket_, POLLIN, acceptTimeoutMilliseconds)) {
        throw std::runtime_error("No connection came");
    }
    return Peer(::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC));
}

}  // namespace tarvik::tests
