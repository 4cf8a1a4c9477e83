// SPDX-License-Identifier: MIT

#include "tests/linux/system/MockLogind.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/bus/BusHandles.h"
#include "tests/support/BusDaemon.h"

namespace tarvik::tests {

namespace {

constexpr const char* busName = "org.freedesktop.DBus";

linuxdesktop::BusHandle openBus() {
    sd_bus* bus = nullptr;
    sd_bus_open_system(&bus);
    return linuxdesktop::BusHandle(bus);
}

bool belongsTo(pid_t process, sd_bus* bus, const std::string& name) {
    sd_bus_message* reply = nullptr;
    sd_bus_call_method(bus, busName, "/", busName, "GetConnectionUnixProcessID", nullptr, &reply,
                       "s", name.c_str());
    const linuxdesktop::BusMessage answer(reply);
    std::uint32_t owner = 0;
    return answer && sd_bus_message_read(answer.get(), "u", &owner) > 0 &&
           owner == static_cast<std::uint32_t>(process);
}

std::vector<std::string> namesOn(sd_bus* bus) {
    std::vector<std::string> names;
    sd_bus_message* reply = nullptr;
    sd_bus_call_method(bus, busName, "/", busName, "ListNames", nullptr, &reply, "");
    const linuxdesktop::BusMessage answer(reply);
    const char* name = nullptr;
    if (answer && sd_bus_message_enter_container(answer.get(), 'a', "s") > 0) {
        while (sd_bus_message_read(answer.get(), "s", &name) > 0) {
            names.emplace_back(name);
        }
    }
    return names;
}

}  // namespace

MockLogind::MockLogind(const std::filesystem::path& folder)
    : socket_(folder / "system_bus_socket") {
    std::filesystem::create_directory(folder);
    start();
}

void MockLogind::start() {
    const std::string address = "unix:path=" + socket_.string();
    bus_.emplace(busDaemonAt(address));
    // The address is printed once the bus listens.
    bus_->readLine();
    variables_.set("DBUS_SYSTEM_BUS_ADDRESS", address);
    logind_.emplace(std::vector<std::string>{"/usr/bin/python3", "-m", "dbusmock", "--system",
                                             "--template", "logind"});
}

void MockLogind::stop() {
    logind_.reset();
    bus_.reset();
    std::filesystem::remove(socket_);
}

void MockLogind::announceSleep(bool isGoingToSleep) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    const linuxdesktop::BusHandle bus = openBus();
    ASSERT_TRUE(bus);
    int result = -1;
    while (result < 0 && std::chrono::steady_clock::now() < deadline) {
        result = sd_bus_call_method(bus.get(), "org.freedesktop.login1", "/org/freedesktop/login1",
                                    "org.freedesktop.DBus.Mock", "EmitSignal", nullptr, nullptr,
                                    "sssav", "org.freedesktop.login1.Manager", "PrepareForSleep",
                                    "b", 1, "b", static_cast<int>(isGoingToSleep));
    }
    ASSERT_GE(result, 0);
}

bool MockLogind::isHeardBy(pid_t process) const {
    const linuxdesktop::BusHandle bus = openBus();
    const char* own = nullptr;
    if (!bus || sd_bus_get_unique_name(bus.get(), &own) < 0) {
        return false;
    }
    for (const std::string& name : namesOn(bus.get())) {
        if (name.starts_with(':') && name != own && belongsTo(process, bus.get(), name) &&
            sd_bus_call_method(bus.get(), name.c_str(), "/", "org.freedesktop.DBus.Peer", "Ping",
                               nullptr, nullptr, "") >= 0) {
            return true;
        }
    }
    return false;
}

}  // namespace tarvik::tests
