// SPDX-License-Identifier: MIT

#include "platform/linux/settings/ProgramPaths.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace tarvik::linuxdesktop {

std::string helperPath(const std::string& name) {
    std::error_code error;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const char* place : {".", TARVIK_LIBEXEC}) {
        const auto path = (folder / place / name).lexically_normal();
        if (!error && access(path.c_str(), X_OK) == 0) {
            return path.string();
        }
    }
    return "";
}

std::string runtimePath(const std::string& name) {
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return folder != nullptr && *folder == '/' ? std::string(folder) + "/" + name : "";
}

}  // namespace tarvik::linuxdesktop
