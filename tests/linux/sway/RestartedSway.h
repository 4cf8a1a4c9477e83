// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <optional>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TemporaryVariables.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// A Sway of a test's own, which always has the same sockets. The environment names the sockets
/// while the object lives.
class RestartedSway {
  public:
    RestartedSway();
    RestartedSway(const RestartedSway&) = delete;
    RestartedSway& operator=(const RestartedSway&) = delete;

    /// Starts Sway and waits until it answers.
    void start();
    /// Kills Sway, which leaves its sockets behind.
    void kill() { sway_->kill(); }
    /// Has Sway end by itself.
    void end();
    /// Has Sway answer nobody, until goOn().
    void stop() { sway_->send(SIGSTOP); }
    void goOn() { sway_->send(SIGCONT); }

  private:
    TemporaryFolder folder_;
    TemporaryVariables variables_;
    std::optional<TestProcess> sway_;
};

}  // namespace tarvik::tests
