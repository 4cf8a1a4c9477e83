// SPDX-License-Identifier: MIT

#include "tests/linux/accessibility/PrivateSession.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/linux/bus/BusReplies.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::tests {

using linuxdesktop::BusMessage;
using linuxdesktop::BusObject;
using linuxdesktop::MessageBus;

namespace {

// Long enough for a service that has to be started first.
constexpr std::chrono::seconds startTimeout{20};

const BusObject launcher{"org.a11y.Bus", "/org/a11y/bus"};

std::unique_ptr<MessageBus> openSession() {
    auto opened = MessageBus::openSession();
    EXPECT_TRUE(opened);
    return std::move(opened).value();
}

/// Sends one call and waits for its reply, which `read` gets.
void callAndWait(MessageBus& bus, BusMessage call,
                 const std::function<void(sd_bus_message*)>& read) {
    bool hasReplied = false;
    EXPECT_TRUE(bus.call(std::move(call), startTimeout, [&](sd_bus_message* reply) {
        hasReplied = true;
        read(reply);
    }));
    EXPECT_TRUE(bus.dispatchUntil([&] { return hasReplied; },
                                  std::chrono::steady_clock::now() + startTimeout));
}

/// The folder of the private desktop on which the tests run.
std::string desktopFolder() {
    const char* folder = std::getenv("TARVIK_DESKTOP_FOLDER");
    EXPECT_NE(folder, nullptr) << "a private desktop is missing";
    return folder != nullptr ? folder : "";
}

pid_t ownerOn(MessageBus& bus, const std::string& name) {
    std::uint32_t process = 0;
    callAndWait(
        bus,
        bus.newCall({"org.freedesktop.DBus", "/org/freedesktop/DBus"}, "org.freedesktop.DBus",
                    "GetConnectionUnixProcessID", "s", name.c_str()),
        [&](sd_bus_message* reply) { sd_bus_message_read(reply, "u", &process); });
    return static_cast<pid_t>(process);
}

}  // namespace

PrivateSession::PrivateSession() {
    std::string pattern = std::filesystem::temp_directory_path() / "session-XXXXXX";
    EXPECT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    variables_.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder_ + "/bus");
    variables_.set("XDG_RUNTIME_DIR", folder_);
}

PrivateSession::~PrivateSession() {
    killBus();
    std::error_code ignored;  // What is left behind in a temporary folder harms nobody.
    std::filesystem::remove_all(folder_, ignored);
}

void PrivateSession::startBus() {
    // The private desktop's bus starts the same programs.
    const std::string config = desktopFolder() + "/session-bus.conf";
    bus_.emplace(std::vector<std::string>{
        "env", "-u", "DISPLAY", "dbus-daemon", "--config-file=" + config, "--nofork", "--nopidfile",
        "--print-address=1", "--address=unix:path=" + folder_ + "/bus"});
    EXPECT_TRUE(bus_->readLine());
}

void PrivateSession::killBus() {
    bus_.reset();
    std::filesystem::remove(folder_ + "/bus");
}

void PrivateSession::leadProgramsHere() {
    variables_.set("AT_SPI_BUS_ADDRESS", accessibilityAddress());
}

pid_t PrivateSession::ownerOnSessionBus(const std::string& name) {
    return ownerOn(*openSession(), name);
}

pid_t PrivateSession::ownerOnAccessibilityBus(const std::string& name) {
    auto bus = MessageBus::open(accessibilityAddress());
    EXPECT_TRUE(bus);
    return ownerOn(*std::move(bus).value(), name);
}

std::string PrivateSession::accessibilityAddress() {
    const auto bus = openSession();
    std::string address;
    callAndWait(*bus, bus->newCall(launcher, "org.a11y.Bus", "GetAddress"),
                [&](sd_bus_message* reply) { address = linuxdesktop::textIn(reply).value_or(""); });
    return address;
}

void PrivateSession::setEnabled(bool isEnabled) {
    const auto bus = openSession();
    callAndWait(*bus,
                bus->newCall(launcher, "org.freedesktop.DBus.Properties", "Set", "ssv",
                             "org.a11y.Status", "IsEnabled", "b", isEnabled ? 1 : 0),
                [](sd_bus_message* reply) { EXPECT_FALSE(linuxdesktop::isError(reply)); });
}

}  // namespace tarvik::tests
