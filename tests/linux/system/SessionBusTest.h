// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/bus/BusHandles.h"
#include "tests/linux/system/ApplicationTest.h"
#include "tests/support/BusDaemon.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// A test inside an application that has a session bus of its own.
class SessionBusTest : public ApplicationTest {
  protected:
    SessionBusTest() { startBus(); }
    ~SessionBusTest() override { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }

    void startBus() {
        bus.emplace(busDaemonAt("unix:dir=" + folder.path().string()));
        setenv("DBUS_SESSION_BUS_ADDRESS", bus->readLine().value_or("").c_str(), 1);
    }
    /// Starts a bus anew that has been ended, at the address where it was.
    void restartBus() {
        const std::string address = getenv("DBUS_SESSION_BUS_ADDRESS");
        const std::string path = address.substr(0, address.find(','));
        bus.emplace(busDaemonAt(path));
        setenv("DBUS_SESSION_BUS_ADDRESS", bus->readLine().value_or("").c_str(), 1);
    }

    /// Runs `work` on another thread, and the main loop until `work` is done. For calls that wait
    /// for an answer of this process.
    template <typename Work>
    auto meanwhile(Work work) {
        auto result = std::async(std::launch::async, std::move(work));
        EXPECT_TRUE(runUntil(
            [&] { return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        return result.get();
    }

    /// Calls a method as another program does; `fill` adds the arguments. Returns the name of the
    /// error reply, empty for success.
    std::string callFromOutside(const char* service, const char* path, const char* interface,
                                const char* member, std::function<void(sd_bus_message*)> fill) {
        return meanwhile([=] {
            sd_bus* opened = nullptr;
            sd_bus_open_user(&opened);
            const linuxdesktop::BusHandle caller(opened);
            sd_bus_message* message = nullptr;
            sd_bus_message_new_method_call(caller.get(), &message, service, path, interface,
                                           member);
            const linuxdesktop::BusMessage call(message);
            fill(call.get());
            sd_bus_error error = SD_BUS_ERROR_NULL;
            sd_bus_message* answer = nullptr;
            sd_bus_call(caller.get(), call.get(), 5'000'000, &error, &answer);
            sd_bus_message_unref(answer);
            const std::string name = error.name != nullptr ? error.name : "";
            sd_bus_error_free(&error);
            return name;
        });
    }

    std::optional<TestProcess> bus;
};

}  // namespace tarvik::tests
