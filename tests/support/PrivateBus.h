// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <optional>
#include <string>

#include "tests/support/BusDaemon.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TemporaryVariables.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// A session bus of a test's own, as busDaemonAt() starts it, which always has the same address.
/// The environment has the address while the object lives.
class PrivateBus {
  public:
    PrivateBus() {
        variables_.set("DBUS_SESSION_BUS_ADDRESS", address());
        start();
    }

    std::string address() const { return "unix:path=" + (folder_ / "bus").string(); }

    /// Starts the bus, and waits until it listens.
    void start() {
        std::filesystem::remove(folder_ / "bus");
        daemon_.emplace(busDaemonAt(address()));
        daemon_->readLine();
    }
    void kill() { daemon_->kill(); }
    /// Has the bus answer nobody, until goOn().
    void stop() { daemon_->send(SIGSTOP); }
    void goOn() { daemon_->send(SIGCONT); }

  private:
    TemporaryFolder folder_;
    TemporaryVariables variables_;
    std::optional<TestProcess> daemon_;
};

}  // namespace tarvik::tests
