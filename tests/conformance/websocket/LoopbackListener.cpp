// SPDX-License-Identifier: MIT

#include "tests/conformance/websocket/LoopbackListener.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

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

// Programs that a test starts must not keep a connection open.
void closeOnExec(int socket) {
    ::fcntl(socket, F_SETFD, FD_CLOEXEC);
}

bool hasInput(int socket, int milliseconds) {
    pollfd wait{socket, POLLIN, 0};
    return ::poll(&wait, 1, milliseconds) == 1;
}

}  // namespace

LoopbackListener::LoopbackListener(const std::string& address, std::uint16_t port, int backlog) {
    SocketAddress local = makeAddress(address, port);
    socklen_t size = local.any.sa_family == AF_INET6 ? sizeof local.v6 : sizeof local.v4;
    socket_ = ::socket(local.any.sa_family, SOCK_STREAM, 0);
    closeOnExec(socket_);
    constexpr int yes = 1;
    ::setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (socket_ < 0 || ::bind(socket_, &local.any, size) != 0 || ::listen(socket_, backlog) != 0 ||
        ::getsockname(socket_, &local.any, &size) != 0) {
        throw std::runtime_error("No listening socket on " + address);
    }
    port_ = ntohs(local.any.sa_family == AF_INET6 ? local.v6.sin6_port : local.v4.sin_port);
}

LoopbackListener::~LoopbackListener() {
    ::close(socket_);
}

bool LoopbackListener::hasConnection() const {
    return hasInput(socket_, 0);
}

int LoopbackListener::acceptSocket() {
    if (!hasInput(socket_, acceptTimeoutMilliseconds)) {
        throw std::runtime_error("No connection came");
    }
    const int connection = ::accept(socket_, nullptr, nullptr);
    closeOnExec(connection);
    return connection;
}

}  // namespace tarvik::tests
