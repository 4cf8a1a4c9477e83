// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/ssl.h>

#include <string>
#include <string_view>

#include "tests/conformance/websocket/PlainPeer.h"

namespace tarvik::tests {

/// The server's end of a connection, with TLS after startTls(). end() sends close_notify and FIN.
class Peer final : public PlainPeer {
  public:
    using PlainPeer::PlainPeer;
    Peer(Peer&& other) noexcept;
    Peer& operator=(Peer&&) = delete;
    ~Peer() override;

    /// Does the TLS handshake. False when the client ends the handshake.
    bool startTls(SSL_CTX* context);
    /// Whether the handshake resumed an earlier session.
    bool isResumed() const;
    /// The server name that the client indicated in the TLS handshake.
    std::string serverName() const;

    /// Like write(), but false when the client accepts nothing for 0.5 s. The next write must
    /// repeat the same bytes then.
    bool tryWrite(std::string_view bytes);

    void end() override;
    void reset() override;

  protected:
    long readSome(void* bytes, std::size_t size) override;
    long writeSome(const void* bytes, std::size_t size) override;

  private:
    SSL* tls_ = nullptr;
};

}  // namespace tarvik::tests
