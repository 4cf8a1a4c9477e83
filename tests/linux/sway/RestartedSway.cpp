// SPDX-License-Identifier: MIT

#include "tests/linux/sway/RestartedSway.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

constexpr auto startTimeout = 20s;

}  // namespace

RestartedSway::RestartedSway() {
    std::ofstream(folder_.path() / "config") << "xwayland disable\n"
                                                "seat seat0 fallback true\n"
                                                "focus_on_window_activation focus\n";
    variables_.set("XDG_RUNTIME_DIR", folder_.path());
    variables_.set("SWAYSOCK", folder_.path() / "sway.sock");
    variables_.set("WAYLAND_DISPLAY", "wayland-1");
    variables_.set("TARVIK_SWAY_CONFIG", folder_.path() / "config");
}

void RestartedSway::start() {
    // Sway takes SWAYSOCK for its own socket only while there is no such file.
    std::filesystem::remove(folder_.path() / "sway.sock");
    sway_.emplace(std::vector<std::string>{"env", "-u", "WAYLAND_DISPLAY", "WLR_BACKENDS=headless",
                                           "WLR_LIBINPUT_NO_DEVICES=1", "WLR_RENDERER=pixman",
                                           "sway", "-c", folder_.path() / "config"},
                  TestProcess::Options{{}, TestProcess::ErrorOutput::dropped});
    const auto deadline = std::chrono::steady_clock::now() + startTimeout;
    while (TestProcess::run({"swaymsg", "-t", "get_version"},
                            TestProcess::Options{{}, TestProcess::ErrorOutput::dropped})
               .status != 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("Sway does not start");
        }
        std::this_thread::sleep_for(20ms);
    }
}

void RestartedSway::end() {
    sway_->send(SIGTERM);
    sway_->waitForEnd();
}

}  // namespace tarvik::tests
