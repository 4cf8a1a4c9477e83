// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/ssl.h>

#include <string>

namespace tarvik::linuxdesktop {

/// How OpenSSL reads the system's authorities.
enum class AuthorityReading {
    /// Each from a file of its own, when a certificate needs it.
    onDemand,
    /// All of them at once, which takes some tens of milliseconds and 3 MiB that stay.
    ahead
};

/// How the authorities of this system can be read. Those of SSL_CERT_FILE and SSL_CERT_DIR are read
/// ahead. Reads names of files, and nothing with OpenSSL. Any thread.
AuthorityReading systemAuthorityReading();

/// Makes `context` trust the system's authorities, or those of SSL_CERT_FILE and SSL_CERT_DIR. A
/// store that cannot be read makes every certificate fail to verify. Any thread.
void trustSystemAuthorities(SSL_CTX* context, AuthorityReading reading);

/// Whether OpenSSL finds every authority of the file `bundle` (PEM) in `folder`, where each has the
/// hash of its name as a file name. The files are counted and not read. False where the folder or
/// the bundle cannot be read.
bool hasEveryAuthority(const std::string& folder, const std::string& bundle);

}  // namespace tarvik::linuxdesktop
