// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/ssl.h>

#include <string>

namespace tarvik::linuxdesktop {

/// Makes `context` trust the system's authorities, or those of SSL_CERT_FILE and SSL_CERT_DIR.
///
/// A system may keep each authority in a file of its own, which OpenSSL reads when a certificate
/// needs it. Then nothing is read here but names. Otherwise all authorities are read, which takes
/// some tens of milliseconds and 3 MiB that stay. A store that cannot be read makes every
/// certificate fail to verify. Any thread.
void trustSystemAuthorities(SSL_CTX* context);

/// Whether OpenSSL finds every authority of the file `bundle` (PEM) in `folder`, where each has the
/// hash of its name as a file name. The files are counted and not read. False where the folder or
/// the bundle cannot be read.
bool hasEveryAuthority(const std::string& folder, const std::string& bundle);

}  // namespace tarvik::linuxdesktop
