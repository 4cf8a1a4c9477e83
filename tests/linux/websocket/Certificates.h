#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <string>

namespace tarvik::tests {

struct SslContextDeleter {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
};
using SslContext = std::unique_ptr<SSL_CTX, SslContextDeleter>;

/// A certificate for a test's server.
struct TestCertificate {
    /// As OpenSSL writes it: "DNS:localhost,IP:127.0.0.1".
    std::string names;
    bool isTrusted = true;
    bool isExpired = false;
};

/// The settings of a server with such a certificate. The authority that signs the trusted ones is
/// made at the first use and named by SSL_CERT_FILE from then on, for the whole process.
SslContext makeServerContext(const TestCertificate& certificate);

}  // namespace tarvik::tests
