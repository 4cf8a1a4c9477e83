// SPDX-License-Identifier: MIT

#include "platform/linux/system/LinuxBundle.h"

#include <cstdlib>

namespace tarvik::linuxdesktop {

LinuxBundle::LinuxBundle() {
    if (char* path = realpath("/proc/self/exe", nullptr)) {
        executable_ = path;
        std::free(path);
    }
}

std::optional<std::string> LinuxBundle::objectForInfoDictionaryKey(std::string_view key) const {
    if (key == "CFBundleShortVersionString") {
        return TARVIK_VERSION;
    }
    return std::nullopt;
}

std::string LinuxBundle::bundlePath() const {
    return executable_;
}

std::string LinuxBundle::openCommand() const {
    return "exec";
}

}  // namespace tarvik::linuxdesktop
