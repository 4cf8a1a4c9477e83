// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace tarvik::tests {

/// A listening socket on a loopback address. The kernel completes connections before accept(), so
/// one thread can serve both ends.
class LoopbackListener {
  public:
    static constexpr int defaultBacklog = 16;

    /// `address` is "127.0.0.1" or "::1"; port 0 means any.
    explicit LoopbackListener(const std::string& address, std::uint16_t port = 0,
                              int backlog = defaultBacklog);
    ~LoopbackListener();
    LoopbackListener(const LoopbackListener&) = delete;
    LoopbackListener& operator=(const LoopbackListener&) = delete;

    std::uint16_t port() const { return port_; }
    /// The socket of the next connection, which the caller closes. Throws when none comes within
    /// 10 s.
    int acceptSocket();
    /// Whether a connection waits to be accepted.
    bool hasConnection() const;

  protected:
    int descriptor() const { return socket_; }

  private:
    int socket_ = -1;
    std::uint16_t port_ = 0;
};

}  // namespace tarvik::tests
