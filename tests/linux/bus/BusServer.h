// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <mutex>
#include <thread>

#include "platform/linux/bus/BusHandles.h"

namespace tarvik::tests {

/// The connection of a test's own service to the session bus of the process. A thread answers the
/// calls, and holds the mutex meanwhile. The last member of the service, so that the thread ends
/// before what the thread uses.
class BusServer {
  public:
    /// Throws where there is no session bus.
    BusServer();
    /// Leaves the bus.
    ~BusServer();
    BusServer(const BusServer&) = delete;
    BusServer& operator=(const BusServer&) = delete;

    /// Answers calls from here on. The objects and the names are on the bus before.
    void start();
    /// Calls wait for their answers until the service is no longer late. Any thread.
    void setLate(bool isLate) { isLate_ = isLate; }

    /// Under the mutex, once the service has started.
    sd_bus* bus() const { return bus_.get(); }
    std::mutex& mutex() { return mutex_; }

  private:
    void serve();

    std::mutex mutex_;
    linuxdesktop::BusHandle bus_;
    std::atomic<bool> isLate_ = false;
    std::atomic<bool> hasEnded_ = false;
    std::thread thread_;
};

}  // namespace tarvik::tests
