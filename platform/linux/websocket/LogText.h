// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// Text from the network, made safe for a log line: at most 500 characters, valid UTF-8, no control
/// characters. Runs of blanks and line breaks become one blank.
std::string logText(std::string_view text);

/// An HTTP status for a log line: "HTTP 401 Unauthorized".
std::string httpStatusText(unsigned status, std::string_view reason);

/// Whether `text` is valid UTF-8.
bool isUtf8(std::string_view text);

}  // namespace tarvik::linuxdesktop
