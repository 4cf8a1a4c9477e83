// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <string>

#include "platform/linux/bus/BusHandles.h"
#include "platform/linux/gnome/GnomeSettings.h"
#include "tests/linux/bus/BusServer.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// A GNOME Shell of which there is nothing but its name and its version on the session bus.
class FakeShell {
  public:
    FakeShell() {
        sd_bus* opened = nullptr;
        EXPECT_GE(sd_bus_open_user(&opened), 0);
        caller_.reset(opened);
        EXPECT_GE(sd_bus_add_object_vtable(server_.bus(), nullptr, "/org/gnome/Shell",
                                           "org.gnome.Shell", properties, nullptr),
                  0);
        EXPECT_GE(sd_bus_request_name(server_.bus(), "org.gnome.Shell", 0), 0);
        server_.start();
    }

    /// Runs the command of a shortcut, as GNOME does; false when nobody hears of the press.
    static bool press(const std::string& hotKey) {
        const linuxdesktop::GnomeSettings shortcut(
            "org.gnome.settings-daemon.plugins.media-keys.custom-keybinding",
            "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/tarvik-dictate-" +
                hotKey + "/");
        const std::string command = shortcut.text("command").value_or("");
        return !command.empty() && TestProcess::run({"sh", "-c", "exec " + command}).status == 0;
    }

    /// Whether an application has the name under which the commands call.
    bool isApplicationThere() {
        sd_bus_message* reply = nullptr;
        int isThere = 0;
        sd_bus_call_method(caller_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "NameHasOwner", nullptr, &reply, "s",
                           "com.tarvik.dictate.HotKeys");
        EXPECT_GE(sd_bus_message_read(reply, "b", &isThere), 0);
        sd_bus_message_unref(reply);
        return isThere != 0;
    }

  private:
    static int version(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                       const char* /*property*/, sd_bus_message* reply, void* /*data*/,
                       sd_bus_error* /*error*/) {
        return sd_bus_message_append(reply, "s", "43.9");
    }

    static constexpr sd_bus_vtable properties[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY("ShellVersion", "s", &FakeShell::version, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_VTABLE_END};

    linuxdesktop::BusHandle caller_;
    BusServer server_;
};

}  // namespace tarvik::tests
