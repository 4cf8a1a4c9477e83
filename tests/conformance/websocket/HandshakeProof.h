// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tarvik::tests {

/// The value of Sec-WebSocket-Accept that proves a server has read `key`, the value of
/// Sec-WebSocket-Key (RFC 6455, 4.2.2). Needs no library, so that every system can serve.
std::string handshakeProof(const std::string& key);

}  // namespace tarvik::tests
