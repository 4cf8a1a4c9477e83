// SPDX-License-Identifier: MIT

#include "platform/linux/settings/TakenShortcuts.h"

#include <unistd.h>

#include <sstream>

#include "platform/linux/settings/AtomicFile.h"
#include "platform/linux/settings/ConfigDirectory.h"

namespace tarvik::linuxdesktop {

TakenShortcuts::TakenShortcuts(const std::string& name)
    : path_(configDirectory() + "/Tarvik/" + name) {}

std::optional<std::vector<std::string>> TakenShortcuts::lines() const {
    const auto content = readWholeFile(path_);
    if (!content || !content.value()) {
        return std::nullopt;
    }
    std::vector<std::string> found;
    std::istringstream stream(*content.value());
    for (std::string line; std::getline(stream, line);) {
        found.push_back(line);
    }
    return found;
}

bool TakenShortcuts::write(const std::vector<std::string>& lines) const {
    std::string content;
    for (const std::string& line : lines) {
        content += line + "\n";
    }
    return !replaceFile(path_, content, 0600, 0700, Durability::disk);
}

void TakenShortcuts::remove() const {
    unlink(path_.c_str());
}

}  // namespace tarvik::linuxdesktop
