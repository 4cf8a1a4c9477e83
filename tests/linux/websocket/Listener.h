#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/linux/websocket/Peer.h"

namespace tarvik::tests {

/// A listening socket on a loopback address with a port of its own. The kernel takes connections in
/// before they are accepted, so one thread can be both ends.
class Listener {
  public:
    /// "127.0.0.1" or "::1"; port 0 means any. With `isDeaf` no connection is ever taken in: the
    /// attempts stay without an answer.
    explicit Listener(const std::string& address, std::uint16_t port = 0, bool isDeaf = false);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::uint16_t port() const { return port_; }
    /// The next connection; throws when none comes within ten seconds.
    Peer accept();
    /// Whether a connection waits to be accepted.
    bool hasConnection() const;

  private:
    void stuff();

    int socket_ = -1;
    std::uint16_t port_ = 0;
    std::vector<int> stuffing_;
};

}  // namespace tarvik::tests
