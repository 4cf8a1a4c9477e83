#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace tarvik::tests {

/// A session bus, with the accessibility bus that it starts, for one test alone; the environment
/// names it while it lives. Without a display, so that the programs of the session around the test
/// do not come across it.
class PrivateSession {
  public:
    /// Names the bus, but does not start it.
    PrivateSession();
    /// Ends everything and puts the environment back.
    ~PrivateSession();
    PrivateSession(const PrivateSession&) = delete;
    PrivateSession& operator=(const PrivateSession&) = delete;

    void startBus();
    void killBus();
    /// The process that owns this name, on the session bus or on the accessibility bus.
    pid_t ownerOnSessionBus(const std::string& name);
    pid_t ownerOnAccessibilityBus(const std::string& name);
    /// Moves the desktop's switch, as a settings program does.
    void setEnabled(bool isEnabled);

  private:
    struct Variable {
        std::string name;
        std::optional<std::string> before;
    };
    void setVariable(Variable& variable, const std::string& value);
    void restore(const Variable& variable);
    std::string accessibilityAddress();

    std::string folder_;
    Variable address_{"DBUS_SESSION_BUS_ADDRESS", {}};
    Variable runtime_{"XDG_RUNTIME_DIR", {}};
    pid_t bus_ = -1;
};

}  // namespace tarvik::tests
