// SPDX-License-Identifier: MIT

#include "platform/linux/settings/ConfigDirectory.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace tarvik::linuxdesktop {

namespace {

std::string homeDirectory() {
    if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') {
        return home;
    }
    const passwd* user = getpwuid(getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

}  // namespace

std::string configDirectory() {
    const char* chosen = std::getenv("XDG_CONFIG_HOME");
    std::string directory =
        chosen != nullptr && chosen[0] == '/' ? chosen : homeDirectory() + "/.config";
    while (directory.size() > 1 && directory.back() == '/') {
        directory.pop_back();
    }
    return directory;
}

}  // namespace tarvik::linuxdesktop
