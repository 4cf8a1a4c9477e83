// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <set>
#include <string>

#include "base/Result.h"

namespace tarvik::service {

/// Reads the keys that open streams: one a line, without blanks around them. Empty lines and lines
/// that begin with '#' do not count. An error if the file cannot be read or has no key.
Result<std::set<std::string, std::less<>>> readKeyFile(const std::filesystem::path& path);

}  // namespace tarvik::service
