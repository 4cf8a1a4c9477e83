#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// The right-hand side of an entry of a settings file, as QSettings writes and reads it. All text
/// is UTF-8 without a zero character.

/// A text as it stands in the file; quoted whenever it could be taken for anything but a text.
std::string encodeIniValue(std::string_view text);

/// The text that `value` stands for; nothing when it stands for a list or for one of the types that
/// QSettings writes with an @.
std::optional<std::string> decodeIniValue(std::string_view value);

/// A key as it stands in the file.
std::string encodeIniKey(std::string_view text);

/// The key that `key` stands for.
std::string decodeIniKey(std::string_view key);

}  // namespace tarvik::linuxdesktop
