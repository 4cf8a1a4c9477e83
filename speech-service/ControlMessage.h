// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

namespace tarvik::service {

/// The kinds of text messages from a client.
enum class ControlMessage { closeStream, finalize, keepAlive };

/// Parses a text message: a JSON object whose "type" names the kind. Empty for any other text.
std::optional<ControlMessage> parseControlMessage(std::string_view text);

}  // namespace tarvik::service
