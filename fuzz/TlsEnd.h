// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::fuzz {

/// One end of a TLS connection. Operations block, for 100 s at the most: a machine may be busy.
class TlsEnd {
  public:
    /// Takes the ownership of a connected socket. The handshake follows.
    TlsEnd(int socket, SSL_CTX* context);

    /// The handshake of a server or a client. False when the other end breaks it off.
    bool accept() { return SSL_accept(tls_.get()) == 1; }
    bool connect() { return SSL_connect(tls_.get()) == 1; }

    /// False when the other end has closed the connection.
    bool write(std::string_view bytes);
    /// Tells the other end that nothing more is written.
    void endWriting();
    /// What comes until `end` stands at the end of it, or until the connection ends.
    std::string readUntil(std::string_view end);
    /// What comes until the connection ends.
    std::string readAll();
    /// Whether a read gave up.
    bool hasTimedOut() const { return hasTimedOut_; }

  private:
    struct Freed {
        void operator()(SSL* tls) const { SSL_free(tls); }
    };

    int readSome(char* bytes, int size);

    linuxdesktop::FileDescriptor socket_;
    std::unique_ptr<SSL, Freed> tls_;
    bool hasTimedOut_ = false;
};

}  // namespace tarvik::fuzz
