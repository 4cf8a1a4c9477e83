// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/websocket/SystemAuthorities.h"
#include "platform/linux/websocket/TlsSessions.h"

namespace tarvik::linuxdesktop {

/// The TLS settings of all connections: TLS 1.2 or later, and certificates that the system's trust
/// store verifies. SSL_CERT_FILE and SSL_CERT_DIR replace the system's trust store.
class TrustStore {
  public:
    /// Called with the reason why the authority is not trusted, on the thread of prepare() or
    /// sslContext(), once at most.
    using AuthorityErrorHandler = std::function<void(const std::string& reason)>;

    /// `authority` is the path of certificates (PEM) that are trusted as well; empty for none.
    explicit TrustStore(std::string authority = {}, AuthorityErrorHandler onAuthorityError = {})
        : authority_(std::move(authority)), onAuthorityError_(std::move(onAuthorityError)) {}

    /// Does what would delay the first connection by tens of milliseconds, and nothing else: where
    /// the system's authorities can be read on demand, no context is made. Any thread but the main
    /// thread.
    void prepare();

    /// The context of every connection. The first call takes 2 ms and 3 MiB of OpenSSL's, and some
    /// tens of milliseconds more where prepare() has not run. Any thread but the main thread.
    boost::asio::ssl::context& sslContext();

    /// Makes the handshake of `ssl` fail unless the server's certificate is for `host`, a name or
    /// an address. False when OpenSSL rejects `host`; the handshake must not start then.
    [[nodiscard]] static bool requireHost(SSL* ssl, const std::string& host);

    /// Lets the handshake of `ssl` resume an earlier session with the host of requireHost().
    void resumeSession(SSL* ssl) { sessions_.resume(ssl); }

    /// The reason why the certificate did not verify in a failed handshake. Empty when the
    /// certificate did verify.
    static std::optional<std::string> verifyError(SSL* ssl);

  private:
    AuthorityReading authorityReading();

    const std::string authority_;
    const AuthorityErrorHandler onAuthorityError_;
    std::once_flag isReadingKnown_;
    AuthorityReading authorityReading_ = AuthorityReading::ahead;
    std::once_flag isLoaded_;
    TlsSessions sessions_;
    std::optional<boost::asio::ssl::context> context_;
};

}  // namespace tarvik::linuxdesktop
