#include "tests/linux/accessibility/PrivateSession.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

#include "platform/linux/bus/MessageBus.h"
#include "tests/linux/accessibility/TargetProcess.h"

namespace tarvik::tests {

using linuxdesktop::BusMessage;
using linuxdesktop::BusObject;
using linuxdesktop::MessageBus;

namespace {

constexpr std::chrono::seconds patienceWithBus{20};

/// Sends one call and reads the answer with `read`.
void ask(MessageBus& bus, BusMessage call, const std::function<void(sd_bus_message*)>& read) {
    bool isAnswered = false;
    EXPECT_TRUE(bus.call(std::move(call), patienceWithBus, [&](sd_bus_message* answer) {
        isAnswered = true;
        read(answer);
    }));
    EXPECT_TRUE(bus.dispatchUntil([&] { return isAnswered; },
                                  std::chrono::steady_clock::now() + patienceWithBus));
}

pid_t ownerOn(MessageBus& bus, const std::string& name) {
    std::uint32_t process = 0;
    ask(bus,
        bus.newCall({"org.freedesktop.DBus", "/org/freedesktop/DBus"}, "org.freedesktop.DBus",
                    "GetConnectionUnixProcessID", "s", name.c_str()),
        [&](sd_bus_message* answer) { sd_bus_message_read(answer, "u", &process); });
    return static_cast<pid_t>(process);
}

}  // namespace

PrivateSession::PrivateSession() {
    std::string pattern = std::filesystem::temp_directory_path() / "session-XXXXXX";
    EXPECT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    setVariable(address_, "unix:path=" + folder_ + "/bus");
    setVariable(runtime_, folder_);
}

PrivateSession::~PrivateSession() {
    killBus();
    restore(address_);
    restore(runtime_);
    std::error_code ignored;  // What is left behind in a temporary folder harms nobody.
    std::filesystem::remove_all(folder_, ignored);
}

void PrivateSession::startBus() {
    std::vector<std::string> command{"dbus-daemon", "--session", "--nofork", "--nopidfile",
                                     "--address=unix:path=" + folder_ + "/bus"};
    std::vector<char*> arguments;
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    std::vector<char*> environment;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (std::strncmp(*variable, "DISPLAY=", 8) != 0) {
            environment.push_back(*variable);
        }
    }
    environment.push_back(nullptr);
    EXPECT_EQ(
        posix_spawnp(&bus_, arguments[0], nullptr, nullptr, arguments.data(), environment.data()),
        0);
    const std::string socket = folder_ + "/bus";
    EXPECT_TRUE(becomesTrue([&] { return std::filesystem::exists(socket); }, Seconds(10)));
}

void PrivateSession::killBus() {
    if (bus_ > 0) {
        kill(bus_, SIGKILL);
        waitpid(bus_, nullptr, 0);
        bus_ = -1;
        std::filesystem::remove(folder_ + "/bus");
    }
}

pid_t PrivateSession::ownerOnSessionBus(const std::string& name) {
    const auto bus = MessageBus::openSession();
    return ownerOn(*bus, name);
}

pid_t PrivateSession::ownerOnAccessibilityBus(const std::string& name) {
    const auto bus = MessageBus::open(accessibilityAddress());
    return ownerOn(*bus, name);
}

std::string PrivateSession::accessibilityAddress() {
    const auto bus = MessageBus::openSession();
    std::string address;
    ask(*bus, bus->newCall({"org.a11y.Bus", "/org/a11y/bus"}, "org.a11y.Bus", "GetAddress"),
        [&](sd_bus_message* answer) {
            const char* found = "";
            sd_bus_message_read(answer, "s", &found);
            address = found;
        });
    return address;
}

void PrivateSession::setEnabled(bool isEnabled) {
    const auto bus = MessageBus::openSession();
    ask(*bus,
        bus->newCall({"org.a11y.Bus", "/org/a11y/bus"}, "org.freedesktop.DBus.Properties", "Set",
                     "ssv", "org.a11y.Status", "IsEnabled", "b", isEnabled ? 1 : 0),
        [](sd_bus_message* answer) {
            EXPECT_FALSE(sd_bus_message_is_method_error(answer, nullptr));
        });
}

void PrivateSession::setVariable(Variable& variable, const std::string& value) {
    if (const char* before = std::getenv(variable.name.c_str())) {
        variable.before = before;
    }
    setenv(variable.name.c_str(), value.c_str(), 1);
}

void PrivateSession::restore(const Variable& variable) {
    if (variable.before) {
        setenv(variable.name.c_str(), variable.before->c_str(), 1);
    } else {
        unsetenv(variable.name.c_str());
    }
}

}  // namespace tarvik::tests
