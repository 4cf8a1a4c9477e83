// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <memory>

namespace tarvik::linuxdesktop {

struct BusClosed {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
/// An open connection to a message bus, closed with the handle.
using BusHandle = std::unique_ptr<sd_bus, BusClosed>;

struct MessageUnreferenced {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
/// A reference to a message; empty when the message could not be made.
using BusMessage = std::unique_ptr<sd_bus_message, MessageUnreferenced>;

}  // namespace tarvik::linuxdesktop
