// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include "platform/linux/bus/BusHandles.h"

namespace tarvik::tests {

/// A GNOME Shell of which there is nothing but the name on the session bus.
class FakeShell {
  public:
    FakeShell() {
        sd_bus* opened = nullptr;
        EXPECT_GE(sd_bus_open_user(&opened), 0);
        bus_.reset(opened);
        EXPECT_GE(sd_bus_request_name(opened, "org.gnome.Shell", 0), 0);
    }

    /// Calls as the command of a shortcut does; false when nobody takes the call.
    bool press(const char* hotKey) {
        return sd_bus_call_method(bus_.get(), "com.tarvik.dictate.HotKeys",
                                  "/com/tarvik/dictate/HotKeys", "com.tarvik.dictate.HotKeys",
                                  "Press", nullptr, nullptr, "s", hotKey) >= 0;
    }

    /// Whether an application has the name under which the commands call.
    bool isApplicationThere() {
        sd_bus_message* reply = nullptr;
        int isThere = 0;
        sd_bus_call_method(bus_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "NameHasOwner", nullptr, &reply, "s",
                           "com.tarvik.dictate.HotKeys");
        EXPECT_GE(sd_bus_message_read(reply, "b", &isThere), 0);
        sd_bus_message_unref(reply);
        return isThere != 0;
    }

  private:
    linuxdesktop::BusHandle bus_;
};

}  // namespace tarvik::tests
