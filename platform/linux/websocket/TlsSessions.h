// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/ssl.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace tarvik::linuxdesktop {

/// The newest TLS session of each host, in memory only, for a short handshake with the same host.
///
/// A session belongs to the host for which its certificate was verified. A session is used once, so
/// that nobody who watches the network can connect two recordings by it. A session whose
/// certificate has expired is dropped. No data goes out before the handshake ends. Any thread.
class TlsSessions {
  public:
    /// Collects the sessions of the connections of `context`. This object outlives the connections.
    void collectFrom(SSL_CTX* context);
    /// Lets the handshake of `ssl` resume a session with its host. The host that the certificate
    /// must be for is set already.
    void resume(SSL* ssl);

  private:
    struct Deleter {
        void operator()(SSL_SESSION* session) const { SSL_SESSION_free(session); }
    };
    using Session = std::unique_ptr<SSL_SESSION, Deleter>;

    static int onNewSession(SSL* ssl, SSL_SESSION* session);
    Session take(const std::string& host);

    std::mutex mutex_;
    std::map<std::string, Session> sessions_;
};

}  // namespace tarvik::linuxdesktop
