// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>

#include "tests/support/TemporaryVariables.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// A system bus of the test's own with a logind on it. The process finds both as the real ones.
class MockLogind {
  public:
    /// Starts both. The socket of the bus is in `folder`, which is made.
    explicit MockLogind(const std::filesystem::path& folder);
    MockLogind(const MockLogind&) = delete;
    MockLogind& operator=(const MockLogind&) = delete;

    void start();
    void stop();

    /// Announces that the machine goes to sleep or has woken. Waits until logind is there and has
    /// made the announcement.
    void announceSleep(bool isGoingToSleep);

    /// Whether `process` is on the bus and has answered a call. The subscriptions that it made
    /// before the answer are then in force. Waits for the answer, so the loop of the process runs
    /// on another thread.
    bool isHeardBy(pid_t process) const;

  private:
    std::filesystem::path socket_;
    TemporaryVariables variables_;
    std::optional<TestProcess> bus_;
    std::optional<TestProcess> logind_;
};

}  // namespace tarvik::tests
