#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>

#include "tests/linux/system/SystemProcess.h"

namespace tarvik::tests {

/// A system bus of the test's own, and the login manager on it; the process finds them as its own.
class LoginManager {
  public:
    /// Makes both, with the bus's socket in `folder`, which is made.
    explicit LoginManager(const std::filesystem::path& folder);
    ~LoginManager();
    LoginManager(const LoginManager&) = delete;
    LoginManager& operator=(const LoginManager&) = delete;

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

}  // namespace tarvik::tests
