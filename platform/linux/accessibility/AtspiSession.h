// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// What the session bus knows of accessibility: the desktop's switch, and the address of the
/// accessibility bus. Belongs to the loop's thread; nothing blocks.
class AtspiSession {
  public:
    /// Called in turns of the loop.
    struct Handlers {
        /// Whether accessibility is switched on, at first and at every change.
        std::function<void(bool)> onEnabled;
        /// The address of the accessibility bus, after each query and each start of that bus.
        std::function<void(std::string)> onAddress;
        /// The launcher of the accessibility bus has ended.
        std::function<void()> onLauncherEnded;
        /// There is no accessibility bus; gets the reason.
        std::function<void(std::string)> onMissing;
        /// The session bus is lost. May destroy the object.
        std::function<void()> onLost;
    };

    /// Connects to the session bus and sends the first queries. Empty when there is no session bus.
    /// `loop` outlives the object.
    static std::unique_ptr<AtspiSession> open(EventLoop& loop, Handlers handlers);
    AtspiSession(const AtspiSession&) = delete;
    AtspiSession& operator=(const AtspiSession&) = delete;

    /// Asks for the address of the accessibility bus. The query starts that bus where possible.
    void queryAddress();
    /// Switches accessibility on for the whole desktop.
    void enable();

  private:
    AtspiSession(std::unique_ptr<MessageBus> bus, Handlers handlers);
    void observeLauncher();
    void queryEnabled();
    void onPropertiesChanged(sd_bus_message* signal);

    Handlers handlers_;
    bool isQueryPending_ = false;
    std::unique_ptr<MessageBus> bus_;
};

}  // namespace tarvik::linuxdesktop
