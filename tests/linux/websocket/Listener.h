// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/conformance/websocket/LoopbackListener.h"
#include "tests/linux/websocket/Peer.h"

namespace tarvik::tests {

/// A loopback listener that can keep clients waiting.
class Listener : public LoopbackListener {
  public:
    /// With `hasFullBacklog` the kernel never answers a connection attempt.
    explicit Listener(const std::string& address, std::uint16_t port = 0,
                      bool hasFullBacklog = false);
    ~Listener();

    /// The next connection. Throws when none comes within 10 s.
    Peer accept() { return Peer(acceptSocket()); }
    /// Ends the connections of a full backlog, so that the kernel answers again.
    void emptyBacklog();

  private:
    void fillBacklog();

    std::vector<int> backlog_;
};

}  // namespace tarvik::tests
