// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "tests/support/TemporaryVariables.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// A session bus for one test alone, with the accessibility bus that it starts. The environment
/// names the session bus while the object lives. Without a display, so that the programs of the
/// session around the test do not come across it.
class PrivateSession {
  public:
    /// Puts the bus's address into the environment, but does not start the bus.
    PrivateSession();
    /// Ends everything and puts the environment back.
    ~PrivateSession();
    PrivateSession(const PrivateSession&) = delete;
    PrivateSession& operator=(const PrivateSession&) = delete;

    /// Starts the bus and waits until it listens.
    void startBus();
    void killBus();
    /// The process that owns this name, on the session bus or on the accessibility bus.
    pid_t ownerOnSessionBus(const std::string& name);
    pid_t ownerOnAccessibilityBus(const std::string& name);
    /// Leads the programs that start from here on to the accessibility bus of this session,
    /// although their display names that of the session around the test.
    void leadProgramsHere();
    /// Switches accessibility on or off, as a settings program does.
    void setEnabled(bool isEnabled);

  private:
    std::string accessibilityAddress();

    std::string folder_;
    TemporaryVariables variables_;
    std::optional<TestProcess> bus_;
};

}  // namespace tarvik::tests
