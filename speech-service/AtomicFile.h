#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "base/Error.h"

namespace tarvik::service {

/// Puts `content` in the place of the file at `path`, whole or not at all, readable by its owner
/// only if `isPrivate`.
std::optional<Error> writeFile(const std::filesystem::path& path, std::string_view content,
                               bool isPrivate);

}  // namespace tarvik::service
