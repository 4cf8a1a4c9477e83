// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <string>
#include <thread>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::fuzz {

/// A message bus for one client, on a thread of its own. The bus names the client, takes its match
/// rules, and leaves every other call to a script.
class FakeBus {
  public:
    /// Handles a call, on the thread of the bus. The script replies to `call` itself, or not at
    /// all, and may send signals.
    using Script = std::function<void(sd_bus* bus, sd_bus_message* call)>;

    explicit FakeBus(Script script);
    /// Waits until the client has closed the connection.
    ~FakeBus();
    FakeBus(const FakeBus&) = delete;
    FakeBus& operator=(const FakeBus&) = delete;

    /// For MessageBus::open() and DBUS_SESSION_BUS_ADDRESS.
    const std::string& address() const { return address_; }

  private:
    void serve();
    static int onMessage(sd_bus_message* message, void* self, sd_bus_error* error);

    const Script script_;
    std::string address_;
    linuxdesktop::FileDescriptor listening_;
    std::thread thread_;
};

}  // namespace tarvik::fuzz
