// SPDX-License-Identifier: MIT

#include "platform/linux/ibus/IbusAddress.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

#include "platform/linux/settings/ConfigDirectory.h"

namespace tarvik::linuxdesktop {

namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

// Empty when the file is missing.
std::string firstLineOf(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

std::string machineId() {
    const std::string id = firstLineOf("/var/lib/dbus/machine-id");
    return id.empty() ? firstLineOf("/etc/machine-id") : id;
}

// "0" for ":0.0".
std::string numberOfDisplay(const std::string& display) {
    const auto colon = display.find(':');
    const std::string after = colon == std::string::npos ? display : display.substr(colon + 1);
    return after.substr(0, after.find('.'));
}

std::string addressIn(const std::filesystem::path& path) {
    constexpr std::string_view beginning = "IBUS_ADDRESS=";
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(beginning)) {
            return line.substr(beginning.size());
        }
    }
    return {};
}

// IBus names the file by the display that it was started for. In a Wayland session that is the
// compositor's, with older versions that of the compositor's X server.
std::vector<std::filesystem::path> addressFiles() {
    if (const std::string file = variable("IBUS_ADDRESS_FILE"); !file.empty()) {
        return {file};
    }
    const std::filesystem::path folder = configDirectory() + "/ibus/bus";
    std::vector<std::filesystem::path> files;
    for (const std::string& display :
         {variable("WAYLAND_DISPLAY"), numberOfDisplay(variable("DISPLAY"))}) {
        if (!display.empty()) {
            files.push_back(folder / (machineId() + "-unix-" + display));
        }
    }
    return files;
}

}  // namespace

Result<std::string> ibusAddress() {
    if (const std::string address = variable("IBUS_ADDRESS"); !address.empty()) {
        return address;
    }
    for (const auto& file : addressFiles()) {
        if (std::string address = addressIn(file); !address.empty()) {
            return address;
        }
    }
    return Error{ENOENT, "IBus does not run in this session"};
}

std::filesystem::path ibusAddressFile() {
    if (!variable("IBUS_ADDRESS").empty()) {
        return {};
    }
    const auto files = addressFiles();
    const auto found = std::ranges::find_if(
        files, [](const std::filesystem::path& file) { return !addressIn(file).empty(); });
    if (found != files.end()) {
        return *found;
    }
    return files.empty() ? std::filesystem::path() : files.front();
}

}  // namespace tarvik::linuxdesktop
