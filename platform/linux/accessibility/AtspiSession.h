#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// The session bus's view of accessibility: the switch of the desktop and where the accessibility
/// bus is. It belongs to its bus's thread.
class AtspiSession {
  public:
    struct Handlers {
        /// Whether accessibility is switched on, at first and at every change.
        std::function<void(bool)> onEnabled;
        /// Where the accessibility bus is, each time it has been asked for or started anew.
        std::function<void(std::string)> onAddress;
        /// What started the accessibility bus has ended.
        std::function<void()> onEnded;
        /// There is no accessibility bus; gets the reason.
        std::function<void(std::string)> onMissing;
    };

    /// Joins the session bus and asks; the handlers are called inside dispatch() of bus(). Empty
    /// when there is no session bus.
    static std::unique_ptr<AtspiSession> open(Handlers handlers);
    AtspiSession(const AtspiSession&) = delete;
    AtspiSession& operator=(const AtspiSession&) = delete;

    MessageBus& bus() { return *bus_; }

    /// Asks where the accessibility bus is, which starts it where that is possible.
    void askForAddress();
    /// Switches accessibility on for the whole desktop.
    void enable();

  private:
    AtspiSession(std::unique_ptr<MessageBus> bus, Handlers handlers);
    void askWhetherEnabled();
    void onPropertiesChanged(sd_bus_message* signal);

    Handlers handlers_;
    bool isAsking_ = false;
    std::unique_ptr<MessageBus> bus_;
};

}  // namespace tarvik::linuxdesktop
