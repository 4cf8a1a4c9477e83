// SPDX-License-Identifier: MIT

#include "platform/linux/settings/TemporaryDesktopFile.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/linux/settings/AtomicFile.h"

namespace tarvik::linuxdesktop {

namespace {

// Tells the file from an installed one.
constexpr std::string_view mark = "X-Tarvik-Temporary=true\n";

std::string dataDirectory() {
    if (const char* folder = std::getenv("XDG_DATA_HOME"); folder != nullptr && *folder == '/') {
        return folder;
    }
    const char* home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "") + "/.local/share";
}

std::string pathIn(std::string_view folder, const std::string& name) {
    return std::string(folder) + "/applications/" + name + ".desktop";
}

bool isMarked(const std::string& content) {
    return content.find(mark) != std::string::npos;
}

bool isInstalled(const std::string& path) {
    const auto content = readWholeFile(path);
    return content && content.value() && !isMarked(*content.value());
}

bool isInstalledAnywhere(const std::string& name) {
    const char* folders = std::getenv("XDG_DATA_DIRS");
    std::string_view left =
        folders != nullptr && *folders != '\0' ? folders : "/usr/local/share:/usr/share";
    bool isFound = isInstalled(pathIn(dataDirectory(), name));
    while (!isFound && !left.empty()) {
        const std::size_t end = std::min(left.find(':'), left.size());
        isFound = isInstalled(pathIn(left.substr(0, end), name));
        left.remove_prefix(std::min(end + 1, left.size()));
    }
    return isFound;
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

TemporaryDesktopFile::TemporaryDesktopFile(platform::Log& log, Description description)
    : log_(log),
      description_(std::move(description)),
      path_(pathIn(dataDirectory(), description_.name)) {}

TemporaryDesktopFile::~TemporaryDesktopFile() {
    remove();
}

void TemporaryDesktopFile::remove() {
    const auto content = readWholeFile(path_);
    if (content && content.value() && isMarked(*content.value())) {
        unlink(path_.c_str());
    }
}

bool TemporaryDesktopFile::makeUnlessInstalled() {
    if (isInstalledAnywhere(description_.name)) {
        remove();
        return false;
    }
    return make();
}

bool TemporaryDesktopFile::make() {
    const std::string executable = ownExecutable();
    const std::string content =
        "[Desktop Entry]\n"
        "Type=Application\n"
        "Name=Tarvik Dictate\n"
        "NoDisplay=true\n"
        "Exec=" +
        commandOf(executable) + "\n" + description_.entries + std::string(mark);
    const auto existing = readWholeFile(path_);
    if (executable.empty() || (existing && existing.value() == content)) {
        return false;
    }
    if (const auto error = replaceFile(path_, content, 0644, 0700, Durability::kernel)) {
        log_.write("TarvikDictate: no desktop file for " + description_.receiver + ": " +
                   error->localizedDescription);
        return false;
    }
    log_.write("TarvikDictate: " + description_.lack + " " + executable +
               "; until the end of this run there is " + path_);
    return true;
}

}  // namespace tarvik::linuxdesktop
