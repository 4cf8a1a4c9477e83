// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Result.h"
#include "speech-service/OpenSslHandles.h"

namespace tarvik::service {

/// Makes a certificate authority (EC P-256). Its name constraints allow only the loopback names of
/// this machine.
Result<Identity> makeAuthority();

/// Makes a server certificate for localhost, 127.0.0.1 and ::1, signed by `authority`.
Result<Identity> makeServerIdentity(const Identity& authority);

/// Whether certificate and key exist, belong together and stay valid for another 30 days.
bool isUsable(const Identity& identity);

/// Whether `authority` has issued and signed `certificate`.
bool isIssuedBy(const Identity& authority, const Identity& certificate);

std::string pemOf(const Certificate& certificate);
std::string pemOf(const Key& key);

/// Reads a certificate and a key from PEM texts. An unreadable part is empty in the result.
Identity identityFromPem(std::string_view certificate, std::string_view key);

}  // namespace tarvik::service
