// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/KWinPermission.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string_view>

#include "platform/linux/settings/AtomicFile.h"

namespace tarvik::linuxdesktop {

namespace {

std::string dataDirectory() {
    if (const char* folder = std::getenv("XDG_DATA_HOME"); folder != nullptr && *folder == '/') {
        return folder;
    }
    const char* home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "") + "/.local/share";
}

std::string ownExecutable() {
    std::string path;
    if (char* resolved = realpath("/proc/self/exe", nullptr)) {
        path = resolved;
        std::free(resolved);
    }
    return path;
}

// As one word of a command line, and then as a value in a desktop file. KWin 5 compares the path
// with the whole value, so that a value is quoted only where it has to be.
std::string commandOf(const std::string& path) {
    const auto isPlain = [](unsigned char character) {
        return std::isalnum(character) != 0 ||
               std::string_view("/._-+").find(static_cast<char>(character)) !=
                   std::string_view::npos;
    };
    if (std::ranges::all_of(path, isPlain)) {
        return path;
    }
    std::string command = "\"";
    for (const char character : path) {
        if (character == '"' || character == '`' || character == '$') {
            command += "\\\\";
        } else if (character == '\\') {
            command += "\\\\\\";
        } else if (character == '%') {
            command += '%';
        }
        command += character;
    }
    return command + '"';
}

}  // namespace

KWinPermission::KWinPermission(platform::Log& log)
    : log_(log), path_(dataDirectory() + "/applications/com.tarvik.dictate.kwin.desktop") {}

KWinPermission::~KWinPermission() {
    unlink(path_.c_str());
}

bool KWinPermission::request() {
    const std::string executable = ownExecutable();
    const std::string content =
        "[Desktop Entry]\n"
        "Type=Application\n"
        "Name=Tarvik Dictate\n"
        "NoDisplay=true\n"
        "Exec=" +
        commandOf(executable) +
        "\n"
        "X-KDE-Wayland-Interfaces=org_kde_plasma_window_management,org_kde_kwin_fake_input\n";
    const auto existing = readWholeFile(path_);
    if (executable.empty() || (existing && existing.value() == content)) {
        return false;
    }
    if (const auto error = replaceFile(path_, content, 0644, 0700, Durability::kernel)) {
        log_.write("TarvikDictate: no desktop file for KWin: " + error->localizedDescription);
        return false;
    }
    log_.write("TarvikDictate: no desktop file lets KWin show its windows to " + executable +
               "; until the end of this run there is " + path_);
    return true;
}

}  // namespace tarvik::linuxdesktop
