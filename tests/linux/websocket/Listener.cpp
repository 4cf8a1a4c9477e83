// SPDX-License-Identifier: MIT

#include "tests/linux/websocket/Listener.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace tarvik::tests {

Listener::Listener(const std::string& address, std::uint16_t port, bool hasFullBacklog)
    : LoopbackListener(address, port, hasFullBacklog ? 0 : defaultBacklog) {
    if (hasFullBacklog) {
        fillBacklog();
    }
}

// Fills the queue of connections that wait for accept(). The kernel ignores further attempts.
void Listener::fillBacklog() {
    constexpr int maxClients = 16;
    for (int count = 0; count < maxClients; ++count) {
        sockaddr_storage target{};
        socklen_t size = sizeof target;
        auto* address = reinterpret_cast<sockaddr*>(&target);
        ::getsockname(descriptor(), address, &size);
        const int client =
            ::socket(target.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        backlog_.push_back(client);
        ::connect(client, address, size);
        constexpr int connectTimeoutMilliseconds = 100;
        pollfd wait{client, POLLOUT, 0};
        if (::poll(&wait, 1, connectTimeoutMilliseconds) != 1) {
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
        ::close(acceptSocket());
    }
}

Listener::~Listener() {
    for (const int client : backlog_) {
        ::close(client);
    }
}

}  // namespace tarvik::tests
