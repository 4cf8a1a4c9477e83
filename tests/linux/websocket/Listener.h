// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/linux/websocket/Peer.h"

namespace tarvik::tests {

/// A listening socket on a loopback address. The kernel completes connections before accept(), so
/// one thread can serve both ends.
class Listener {
  public:
    /// `address` is "127.0.0.1" or "::1"; port 0 means any. With `hasFullBacklog` the kernel never
    /// answers a connection attempt.
    explicit Listener(const std::string& address, std::uint16_t port = 0,
                      bool hasFullBacklog = false);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::uint16_t port() const { return port_; }
    /// The next connection. Throws when none comes within 10 s.
    Peer accept();
    /// Ends the connections of a full backlog, so that the kernel answers again.
    void emptyBacklog();
    /// Whether a connection waits to be accepted.
    bool hasConnection() const;

  private:
    void fillBacklog();

    int socket_ = -1;
    std::uint16_t port_ = 0;
    std::vector<int> backlog_;
};

}  // namespace tarvik::tests
