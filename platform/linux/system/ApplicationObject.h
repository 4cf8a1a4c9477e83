#pragma once

#include <functional>
#include <string>

#include "platform/Application.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/linux/bus/BusConnection.h"

namespace tarvik::linuxdesktop {

/// The running application on the session bus, with the interface org.freedesktop.Application. A
/// second start, a launcher or a desktop's own shortcut calls it. Main thread only.
///
/// Activate and Open bring the application forward. ActivateAction knows "toggle" and "setup"; any
/// other name is answered with an error and costs a line in the log.
class ApplicationObject {
  public:
    /// The requests. `startupId` names the user's action; it is empty where the action is unknown.
    /// A handler runs no nested loop.
    struct Handlers {
        std::function<void(const std::string& startupId)> reopen;
        std::function<void(platform::ApplicationAction, const std::string& startupId)> perform;
    };

    /// `bus` owns the application's name. `clock` and `log` outlive the object.
    ApplicationObject(BusHandle bus, const platform::Clock& clock, platform::Log& log,
                      Handlers handlers);
    ApplicationObject(const ApplicationObject&) = delete;
    ApplicationObject& operator=(const ApplicationObject&) = delete;

    /// Gives the application's name up to the next instance. Calls that still reach this instance
    /// are answered.
    void resign();

  private:
    static int onActivate(sd_bus_message* call, void* self, sd_bus_error* error);
    static int onOpen(sd_bus_message* call, void* self, sd_bus_error* error);
    static int onAction(sd_bus_message* call, void* self, sd_bus_error* error);
    static const sd_bus_vtable methods[];

    platform::Log& log_;
    Handlers handlers_;
    BusConnection bus_;
};

}  // namespace tarvik::linuxdesktop
