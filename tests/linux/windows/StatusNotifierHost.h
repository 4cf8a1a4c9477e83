// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <string>
#include <thread>

#include "base/AtomicReference.h"

namespace tarvik::tests {

/// A panel on the session bus that shows status notifier items. It runs on a thread of its own.
class StatusNotifierHost {
  public:
    StatusNotifierHost();
    ~StatusNotifierHost();
    StatusNotifierHost(const StatusNotifierHost&) = delete;
    StatusNotifierHost& operator=(const StatusNotifierHost&) = delete;

    /// The bus name of the owner of the last item; empty before the first item.
    std::string item() const;

  private:
    static int onRegister(sd_bus_message* message, void* self, sd_bus_error* error);
    static int readTrue(sd_bus* bus, const char* path, const char* interface, const char* property,
                        sd_bus_message* reply, void* self, sd_bus_error* error);
    void run();

    AtomicReference<const std::string> item_;
    std::atomic<bool> isEnding_ = false;
    std::atomic<bool> isRunning_ = false;
    std::thread thread_;

    friend struct NotifierInterface;
};

}  // namespace tarvik::tests
