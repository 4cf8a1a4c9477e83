// SPDX-License-Identifier: MIT

#include "platform/linux/system/XdgLoginItem.h"

#include <unistd.h>

#include <QStandardPaths>
#include <cerrno>
#include <cstring>
#include <utility>

#include "base/Text.h"
#include "platform/linux/settings/AtomicFile.h"
#include "platform/linux/settings/ConfigDirectory.h"

namespace tarvik::linuxdesktop {

namespace {

// A value of a desktop entry, in which the backslash is the escape character.
std::string escapedValue(std::string_view text) {
    std::string value;
    for (const char c : text) {
        switch (c) {
            case '\\':
                value += "\\\\";
                break;
            case '\n':
                value += "\\n";
                break;
            case '\r':
                value += "\\r";
                break;
            case '\t':
                value += "\\t";
                break;
            default:
                value += c;
        }
    }
    return value;
}

std::string unescapedValue(std::string_view value) {
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            text += value[i];
            continue;
        }
        const char letter = value[++i];
        text += letter == 's'   ? ' '
                : letter == 'n' ? '\n'
                : letter == 'r' ? '\r'
                : letter == 't' ? '\t'
                                : letter;
    }
    return text;
}

// One word of the Exec value: quoted as for a shell, with the sign of field codes doubled.
std::string quotedWord(std::string_view word) {
    std::string quoted = "\"";
    for (const char c : word) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') {
            quoted += '\\';
        } else if (c == '%') {
            quoted += '%';
        }
        quoted += c;
    }
    return quoted + '"';
}

std::optional<std::string> valueOf(std::string_view entry, std::string_view key) {
    bool isMainGroup = false;
    while (!entry.empty()) {
        const std::size_t end = entry.find('\n');
        const std::string line = trimmed(entry.substr(0, end));
        entry.remove_prefix(end == std::string_view::npos ? entry.size() : end + 1);
        const std::size_t equals = line.find('=');
        if (line.starts_with('[')) {
            isMainGroup = line == "[Desktop Entry]";
        } else if (isMainGroup && equals != std::string::npos &&
                   trimmed(std::string_view(line).substr(0, equals)) == key) {
            return trimmed(std::string_view(line).substr(equals + 1));
        }
    }
    return std::nullopt;
}

// `program` is a path, or a name that is looked up in the PATH.
bool canBeRun(const std::string& program) {
    return !QStandardPaths::findExecutable(QString::fromStdString(program)).isEmpty();
}

}  // namespace

XdgLoginItem::XdgLoginItem(std::string executable)
    : executable_(std::move(executable)),
      path_(configDirectory() + "/autostart/com.tarvik.dictate.desktop") {}

platform::LoginItemStatus XdgLoginItem::status() {
    const Result<std::optional<std::string>> content = readWholeFile(path_);
    if (!content || !content.value()) {
        return platform::LoginItemStatus::notRegistered;
    }
    const std::string& entry = *content.value();
    const std::optional<std::string> program = valueOf(entry, "TryExec");
    const bool isOff = valueOf(entry, "Hidden") == "true" ||
                       valueOf(entry, "X-GNOME-Autostart-enabled") == "false" ||
                       !valueOf(entry, "Exec") || (program && !canBeRun(unescapedValue(*program)));
    return isOff ? platform::LoginItemStatus::notRegistered : platform::LoginItemStatus::enabled;
}

std::optional<Error> XdgLoginItem::registerItem() {
    const std::string entry =
        "[Desktop Entry]\n"
        "Type=Application\n"
        "Name=Tarvik Dictate\n"
        "Comment=Dictate into any text field\n"
        "Exec=" +
        escapedValue(quotedWord(executable_)) +
        "\n"
        "TryExec=" +
        escapedValue(executable_) +
        "\n"
        "Icon=com.tarvik.dictate\n"
        "Terminal=false\n";
    return replaceFile(path_, entry, 0644, 0700, Durability::kernel);
}

std::optional<Error> XdgLoginItem::unregisterItem() {
    if (unlink(path_.c_str()) != 0 && errno != ENOENT) {
        return Error{errno, "cannot remove " + path_ + ": " + std::strerror(errno)};
    }
    return std::nullopt;
}

}  // namespace tarvik::linuxdesktop
