// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "base/Error.h"

namespace tarvik::service {

/// Replaces the file at `path` by one with `content`, atomically. With `isPrivate` only its owner
/// can read the file. On an error the old file stays.
std::optional<Error> writeFile(const std::filesystem::path& path, std::string_view content,
                               bool isPrivate);

}  // namespace tarvik::service
