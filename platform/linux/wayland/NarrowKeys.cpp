// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/NarrowKeys.h"

#include <filesystem>
#include <string>
#include <system_error>

namespace tarvik::linuxdesktop {

// Whatever the program is called, the pictures of Chromium's own controls stand beside it.
bool hasNarrowKeys(platform::ProcessIdentifier process) {
    std::error_code error;
    const auto program =
        std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", error);
    return !error &&
           std::filesystem::exists(program.parent_path() / "chrome_100_percent.pak", error);
}

}  // namespace tarvik::linuxdesktop
