#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

#include "base/Error.h"
#include "base/Result.h"

namespace tarvik::linuxdesktop {

/// Whether a file is safe on the disk, or only with the kernel, when a write comes back.
enum class Durability { kernel, disk };

/// The whole content of the regular file at `path`; empty when nothing is there. Waits for the
/// disk.
Result<std::optional<std::string>> readWholeFile(const std::string& path);

/// Puts `content` in the place of the file at `path`, so that everybody sees either all of the old
/// file or all of the new one. A missing folder is made with `directoryMode`; a symbolic link stays
/// and what it leads to is replaced. After an error the old file is untouched. Only with
/// Durability::disk does it wait for the disk.
std::optional<Error> replaceFile(const std::string& path, std::string_view content, mode_t mode,
                                 mode_t directoryMode, Durability durability);

}  // namespace tarvik::linuxdesktop
