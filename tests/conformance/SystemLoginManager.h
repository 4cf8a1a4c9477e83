#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>

#include "tests/conformance/SystemProcess.h"

namespace tarvik::conformance {

/// A system bus of the test's own, and the login manager on it; the process finds them as its own.
class SystemLoginManager {
  public:
    /// Makes both, with the bus's socket in `folder`, which is made.
    explicit SystemLoginManager(const std::filesystem::path& folder);
    ~SystemLoginManager();
    SystemLoginManager(const SystemLoginManager&) = delete;
    SystemLoginManager& operator=(const SystemLoginManager&) = delete;

    void start();
    void stop();

    /// Announces that the machine goes to sleep or has woken; waits until the manager is there and
    /// has done so.
    void announceSleep(bool isGoingToSleep);

    /// Whether the process is on the bus and has answered: what it wanted to hear before, it hears
    /// from now on. Waits for the answer, so the process's loop runs on another thread.
    bool isHeardBy(pid_t process) const;

  private:
    std::filesystem::path socket_;
    std::optional<SystemProcess> bus_;
    std::optional<SystemProcess> manager_;
};

}  // namespace tarvik::conformance
