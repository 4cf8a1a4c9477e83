#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/accessibility/FocusTracker.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// A connection to the accessibility bus on which programs report their focus. It belongs to one
/// thread.
class AtspiRegistry {
  public:
    struct Handlers {
        FocusTracker::OnChange onFocus;
        /// Whether programs have been asked to report; gets the reason when they could not be.
        std::function<void(bool, std::string)> onRegistered;
    };

    /// Joins the bus at `address`; the handlers are called inside dispatch() of bus(). Empty when
    /// there is no bus.
    static std::unique_ptr<AtspiRegistry> open(const std::string& address, Handlers handlers);
    AtspiRegistry(const AtspiRegistry&) = delete;
    AtspiRegistry& operator=(const AtspiRegistry&) = delete;

    MessageBus& bus() { return *bus_; }
    FocusTracker& focus() { return focus_; }

  private:
    AtspiRegistry(std::unique_ptr<MessageBus> bus, Handlers handlers);
    void registerEvents();
    void onAnswer(sd_bus_message* answer);

    Handlers handlers_;
    std::unique_ptr<MessageBus> bus_;
    FocusTracker focus_;
};

}  // namespace tarvik::linuxdesktop
