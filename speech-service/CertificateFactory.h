#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Result.h"
#include "speech-service/OpenSslHandles.h"

namespace tarvik::service {

/// Makes a certificate authority (EC P-256) that may vouch for this machine's loopback names only.
Result<Identity> makeAuthority();

/// Makes a server certificate for localhost, 127.0.0.1 and ::1 that `authority` vouches for.
Result<Identity> makeServerIdentity(const Identity& authority);

/// Whether both parts are there, belong together and stay valid for another month.
bool isUsable(const Identity& identity);

/// Whether `authority` vouches for `certificate`.
bool isIssuedBy(const Identity& authority, const Identity& certificate);

std::string pemOf(const Certificate& certificate);
std::string pemOf(const Key& key);

/// The certificate and the key in two PEM texts; a part that cannot be read stays empty.
Identity identityFromPem(std::string_view certificate, std::string_view key);

}  // namespace tarvik::service
