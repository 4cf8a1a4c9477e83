// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

// Keys and values of a settings file, encoded as QSettings writes and reads them. All text is UTF-8
// without a zero character.

/// The value that stands for `text`; quoted where it could be taken for anything but a text.
std::string encodeIniValue(std::string_view text);

/// The text that `value` stands for; empty for a list, for the types that QSettings writes with
/// an @, and for a value with a zero character.
std::optional<std::string> decodeIniValue(std::string_view value);

/// The key in the file that stands for `text`.
std::string encodeIniKey(std::string_view text);

/// The text that the key in the file stands for.
std::string decodeIniKey(std::string_view key);

}  // namespace tarvik::linuxdesktop
