// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

#include "base/Error.h"
#include "base/Result.h"

namespace tarvik::linuxdesktop {

// Any thread; two threads must not change one file at the same time.

/// What has the new content when a write returns: the kernel, or the disk as well.
enum class Durability { kernel, disk };

/// The folder of the file at `path`, without a trailing slash.
std::string folderOf(const std::string& path);

/// The whole content of the regular file at `path`; empty when nothing is there. An error for
/// anything but a regular file, and for a file beyond 1 MiB. Waits for the disk.
Result<std::optional<std::string>> readWholeFile(const std::string& path);

/// Takes every permission for the file or folder at `path` from everybody but its owner. Nothing
/// happens when nothing is there. An error when others keep a permission.
std::optional<Error> closeToOthers(const std::string& path);

/// Replaces the file at `path` by one with `content` and `mode`. A reader sees either all of the
/// old file or all of the new one; after an error the old file is untouched. A missing folder is
/// made with `directoryMode`. A symbolic link stays, and its target is replaced. Waits for the disk
/// only with Durability::disk.
std::optional<Error> replaceFile(const std::string& path, std::string_view content, mode_t mode,
                                 mode_t directoryMode, Durability durability);

}  // namespace tarvik::linuxdesktop
