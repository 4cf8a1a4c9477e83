// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <optional>

#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TemporaryVariables.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// A KWin of a test's own, which always has the same sockets, on a session bus of its own. The
/// environment names the sockets while the object lives. KWin trusts every program.
class RestartedKWin {
  public:
    RestartedKWin();
    RestartedKWin(const RestartedKWin&) = delete;
    RestartedKWin& operator=(const RestartedKWin&) = delete;

    /// Starts KWin and waits until KWin has its names on the bus.
    void start();
    /// Kills KWin, which leaves its socket behind.
    void kill() { kwin_->kill(); }
    /// Has KWin answer nobody, until goOn().
    void stop() { kwin_->send(SIGSTOP); }
    void goOn() { kwin_->send(SIGCONT); }
    /// The same for the session bus.
    void stopBus() { bus_.stop(); }
    void goOnBus() { bus_.goOn(); }

  private:
    TemporaryFolder folder_;
    TemporaryVariables variables_;
    PrivateBus bus_;
    std::optional<TestProcess> kwin_;
};

}  // namespace tarvik::tests
