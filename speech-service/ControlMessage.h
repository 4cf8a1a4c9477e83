#pragma once

#include <optional>
#include <string_view>

namespace tarvik::service {

/// What a client says in a text message.
enum class ControlMessage { closeStream, finalize, keepAlive };

/// Reads a text message: a JSON object whose "type" names the message. Anything else is none.
std::optional<ControlMessage> parseControlMessage(std::string_view text);

}  // namespace tarvik::service
