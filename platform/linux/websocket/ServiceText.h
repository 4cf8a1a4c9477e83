#pragma once

#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// Text from the network as it may stand in a line of a log: of bounded length, valid UTF-8,
/// without line breaks and other control characters.
std::string serviceText(std::string_view text);

/// A status line without its version: "HTTP 401 Unauthorized".
std::string httpStatusText(unsigned status, std::string_view reason);

/// True when `text` is valid UTF-8.
bool isUtf8(std::string_view text);

}  // namespace tarvik::linuxdesktop
