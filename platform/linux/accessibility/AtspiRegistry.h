// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/accessibility/FocusTracker.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// A connection to the accessibility bus on which programs report their focus. Belongs to the
/// loop's thread; nothing blocks.
class AtspiRegistry {
  public:
    /// Called in turns of the loop or inside the bus's dispatchUntil().
    struct Handlers {
        FocusTracker::OnChange onFocus;
        /// Whether programs have been asked to report; gets the reason when they have not.
        std::function<void(bool, std::string)> onRegistered;
        /// The accessibility bus is lost. May destroy the object.
        std::function<void()> onLost;
    };

    /// Connects to the bus at `address` and registers for events. Empty when nobody listens there.
    /// `loop` outlives the object.
    static std::unique_ptr<AtspiRegistry> open(EventLoop& loop, const std::string& address,
                                               Handlers handlers);
    AtspiRegistry(const AtspiRegistry&) = delete;
    AtspiRegistry& operator=(const AtspiRegistry&) = delete;

    MessageBus& bus() { return *bus_; }
    FocusTracker& focus() { return focus_; }

  private:
    AtspiRegistry(std::unique_ptr<MessageBus> bus, Handlers handlers);
    void registerEvents();
    void onRegisterReply(sd_bus_message* reply);

    Handlers handlers_;
    std::unique_ptr<MessageBus> bus_;
    FocusTracker focus_;
};

}  // namespace tarvik::linuxdesktop
