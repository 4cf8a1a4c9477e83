// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/websocket/TlsSessions.h"

namespace tarvik::linuxdesktop {

/// The TLS settings of all connections: TLS 1.2 or later, and certificates that the system's trust
/// store verifies. SSL_CERT_FILE and SSL_CERT_DIR replace the system's trust store.
class TrustStore {
  public:
    /// `authority` is the path of certificates (PEM) that are trusted as well; empty for none.
    explicit TrustStore(std::string authority = {}) : authority_(std::move(authority)) {}

    /// The context of every connection. The first call reads from the disk, for some tens
    /// of milliseconds where all authorities are in one file. Any thread but the main thread.
    boost::asio::ssl::context& sslContext();

    /// The reason why the authority is not trusted; empty where the authority is. After
    /// sslContext().
    std::optional<std::string> authorityError() const { return authorityError_; }

    /// Makes the handshake of `ssl` fail unless the server's certificate is for `host`, a name or
    /// an address. False when OpenSSL rejects `host`; the handshake must not start then.
    [[nodiscard]] static bool requireHost(SSL* ssl, const std::string& host);

    /// Lets the handshake of `ssl` resume an earlier session with the host of requireHost().
    void resumeSession(SSL* ssl) { sessions_.resume(ssl); }

    /// The reason why the certificate did not verify in a failed handshake. Empty when the
    /// certificate did verify.
    static std::optional<std::string> verifyError(SSL* ssl);

  private:
    const std::string authority_;
    std::optional<std::string> authorityError_;
    std::once_flag isLoaded_;
    TlsSessions sessions_;
    std::optional<boost::asio::ssl::context> context_;
};

}  // namespace tarvik::linuxdesktop
