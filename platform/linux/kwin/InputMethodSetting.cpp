// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/InputMethodSetting.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "platform/linux/settings/AtomicFile.h"
#include "platform/linux/settings/ConfigDirectory.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr std::string_view group = "[Wayland]";
constexpr std::string_view key = "InputMethod";

struct Line {
    std::size_t begin = 0;
    // Behind the line break.
    std::size_t end = 0;
};

bool isEntry(std::string_view line) {
    // A key may be followed by options in brackets.
    const std::string name = trimmed(line.substr(0, line.find('=')));
    return line.find('=') != std::string_view::npos &&
           (name == key || name.starts_with(std::string(key) + "["));
}

std::string valueOf(std::string_view line) {
    return trimmed(line.substr(line.find('=') + 1));
}

// The entries with the key. `groupEnd` is where the next entry of the group belongs; 0 without the
// group.
std::vector<Line> entriesIn(std::string_view content, std::size_t* groupEnd = nullptr) {
    std::vector<Line> entries;
    bool isInGroup = false;
    for (std::size_t begin = 0; begin < content.size();) {
        const std::size_t end = std::min(content.find('\n', begin), content.size() - 1) + 1;
        const std::string_view line = content.substr(begin, end - begin);
        const std::string text = trimmed(line);
        if (text.starts_with('[')) {
            isInGroup = text == group;
        }
        if (isInGroup && !text.empty() && groupEnd != nullptr) {
            *groupEnd = end;
        }
        if (isInGroup && isEntry(line)) {
            entries.push_back({begin, end});
        }
        begin = end;
    }
    return entries;
}

// The last entry counts, as in KDE's library.
std::string valueIn(std::string_view content) {
    const std::vector<Line> entries = entriesIn(content);
    return entries.empty() ? ""
                           : valueOf(content.substr(entries.back().begin,
                                                    entries.back().end - entries.back().begin));
}

std::string contentOf(const std::string& path) {
    const auto content = readWholeFile(path);
    return content && content.value() ? *content.value() : "";
}

std::vector<std::string> systemFiles() {
    const char* folders = std::getenv("XDG_CONFIG_DIRS");
    std::string_view left = folders != nullptr && *folders != '\0' ? folders : "/etc/xdg";
    std::vector<std::string> files;
    while (!left.empty()) {
        const std::size_t end = std::min(left.find(':'), left.size());
        files.push_back(std::string(left.substr(0, end)) + "/kwinrc");
        left.remove_prefix(std::min(end + 1, left.size()));
    }
    return files;
}

}  // namespace

InputMethodSetting::InputMethodSetting(std::string desktopFile)
    : desktopFile_(std::move(desktopFile)), path_(configDirectory() + "/kwinrc") {}

std::string InputMethodSetting::other() const {
    if (const std::string value = valueIn(contentOf(path_)); !value.empty()) {
        return value == desktopFile_ ? "" : value;
    }
    for (const std::string& file : systemFiles()) {
        if (const std::string value = valueIn(contentOf(file)); !value.empty()) {
            return value;
        }
    }
    return "";
}

std::optional<Error> InputMethodSetting::take() {
    auto existing = readWholeFile(path_);
    if (!existing) {
        return existing.error();
    }
    std::string content = existing.value().value_or("");
    if (valueIn(content) == desktopFile_) {
        return std::nullopt;
    }
    if (!content.empty() && !content.ends_with('\n')) {
        content += '\n';
    }
    const std::string entry = std::string(key) + "=" + desktopFile_ + "\n";
    std::size_t groupEnd = 0;
    entriesIn(content, &groupEnd);
    if (groupEnd == 0) {
        content += std::string(group) + "\n" + entry;
    } else {
        content.insert(groupEnd, entry);
    }
    return replaceFile(path_, content, 0600, 0700, Durability::kernel);
}

bool InputMethodSetting::giveBack() {
    std::string content = contentOf(path_);
    bool hasChanged = false;
    for (const Line& line : entriesIn(content)) {
        if (!hasChanged && valueOf(std::string_view(content).substr(
                               line.begin, line.end - line.begin)) == desktopFile_) {
            content.erase(line.begin, line.end - line.begin);
            hasChanged = true;
        }
    }
    const std::string addedGroup = std::string(group) + "\n";
    if (hasChanged && content.ends_with(addedGroup)) {
        content.erase(content.size() - addedGroup.size());
    }
    return hasChanged && !replaceFile(path_, content, 0600, 0700, Durability::kernel);
}

}  // namespace tarvik::linuxdesktop
