// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <string>

namespace tarvik::tests {

struct SslContextDeleter {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
};
using SslContext = std::unique_ptr<SSL_CTX, SslContextDeleter>;

/// The properties of a server certificate.
struct TestCertificate {
    /// Subject alternative names in OpenSSL's notation: "DNS:localhost,IP:127.0.0.1".
    std::string names;
    bool isTrusted = true;
    /// Seconds from now until the certificate expires; negative for an expired one.
    long validity = 24L * 60 * 60;
};

/// A TLS context for a server with such a certificate. The first call makes the trusted authority
/// and sets SSL_CERT_FILE to its file, for the whole process.
SslContext makeServerContext(const TestCertificate& certificate);

/// The file with the authority of the certificates that are not trusted.
std::string strangeAuthorityFile();

}  // namespace tarvik::tests
