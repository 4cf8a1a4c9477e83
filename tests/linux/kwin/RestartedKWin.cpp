// SPDX-License-Identifier: MIT

#include "tests/linux/kwin/RestartedKWin.h"

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

constexpr auto startTimeout = 20s;
constexpr const char* socketName = "wayland-own";
constexpr const char* program = "/usr/bin/kwin_wayland";

// KWin 6 does not know the option.
bool hasActivities() {
    for (const auto& entry : std::filesystem::directory_iterator("/usr/lib")) {
        if (std::filesystem::exists(entry.path() / "libkwin.so.6")) {
            return false;
        }
    }
    return true;
}

bool isOnBus(const std::string& name) {
    const auto reply = TestProcess::run({"dbus-send", "--session", "--print-reply",
                                         "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         "org.freedesktop.DBus.NameHasOwner", "string:" + name});
    return reply.output.find("true") != std::string::npos;
}

}  // namespace

RestartedKWin::RestartedKWin() {
    // The file capability of the installed program would keep KWin from starting here.
    std::filesystem::copy_file(program, folder_ / "kwin_wayland");
    std::filesystem::create_directory(folder_ / "config");
    variables_.set("XDG_RUNTIME_DIR", folder_.path());
    variables_.set("XDG_CONFIG_HOME", folder_ / "config");
    variables_.set("WAYLAND_DISPLAY", socketName);
}

void RestartedKWin::start() {
    std::filesystem::remove(folder_ / socketName);
    std::vector<std::string> command{"env",
                                     "-u",
                                     "WAYLAND_DISPLAY",
                                     "-u",
                                     "DISPLAY",
                                     "KWIN_COMPOSE=Q",
                                     "LIBGL_ALWAYS_SOFTWARE=1",
                                     "KWIN_WAYLAND_NO_PERMISSION_CHECKS=1",
                                     folder_ / "kwin_wayland",
                                     "--virtual",
                                     "--width",
                                     "1280",
                                     "--height",
                                     "800",
                                     "--no-lockscreen",
                                     "--socket",
                                     socketName};
    if (hasActivities()) {
        command.emplace_back("--no-kactivities");
    }
    kwin_.emplace(command, TestProcess::Options{{}, TestProcess::ErrorOutput::dropped});
    const auto deadline = std::chrono::steady_clock::now() + startTimeout;
    while (!isOnBus("org.kde.kglobalaccel") || !isOnBus("org.kde.KWin")) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("KWin does not start");
        }
        std::this_thread::sleep_for(20ms);
    }
}

}  // namespace tarvik::tests
