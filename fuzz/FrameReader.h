// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarvik::fuzz {

/// The whole messages in the bytes that a web-socket server sends after its handshake, up to the
/// close frame or the first byte that RFC 6455 forbids. Shares no code with the client.
std::vector<std::string> messagesIn(std::string_view bytes);

}  // namespace tarvik::fuzz
