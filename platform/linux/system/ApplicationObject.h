#pragma once

#include <functional>
#include <string>

#include "platform/Application.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/linux/bus/BusConnection.h"

namespace tarvik::linuxdesktop {

/// The running application as others see it on the session bus: org.freedesktop.Application, by
/// which a second start, a launcher or a desktop's own shortcut reaches it. Main thread only.
///
/// Activate and Open bring it forward; ActivateAction knows "toggle" and "setup" and answers any
/// other name with an error and a line in the log.
class ApplicationObject {
  public:
    /// What is asked for; each gets the id of the user's action, empty where it is unknown. They
    /// run no loop of their own.
    struct Handlers {
        std::function<void(const std::string& startupId)> reopen;
        std::function<void(platform::ApplicationAction, const std::string& startupId)> perform;
    };

    /// `bus` owns the application's name. `clock` and `log` outlive the object.
    ApplicationObject(BusHandle bus, const platform::Clock& clock, platform::Log& log,
                      Handlers handlers);
    ApplicationObject(const ApplicationObject&) = delete;
    ApplicationObject& operator=(const ApplicationObject&) = delete;

    /// Leaves the name to the next instance; what reaches this one all the same is still answered.
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
