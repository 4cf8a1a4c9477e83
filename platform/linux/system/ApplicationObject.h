// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/Application.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/loop/MainLoop.h"

namespace tarvik::linuxdesktop {

/// The running application on the session bus: org.freedesktop.Application, by which a second
/// start, a launcher or a desktop's own shortcut reaches the application. Main thread only.
///
/// Activate and Open bring the application forward; ActivateAction knows "toggle", "press",
/// "release" and "setup" and answers any other name with an error and a line in the log.
///
/// A lost session bus costs one line in the log. The object joins a bus at the same address again,
/// tries that every 8 s at most, and claims the name there.
class ApplicationObject {
  public:
    /// Carry out a call. Each gets the id of the user's action, empty where unknown, and runs no
    /// loop of its own.
    struct Handlers {
        std::function<void(const std::string& startupId)> onReopen;
        std::function<void(platform::ApplicationAction, const std::string& startupId)> onAction;
    };

    /// `bus` owns the application's name and is driven by no loop yet. Without a bus the object
    /// joins the session's bus as after a loss. `clock` and `log` outlive the object.
    ApplicationObject(std::unique_ptr<MessageBus> bus, const platform::Clock& clock,
                      platform::Log& log, Handlers handlers);
    ApplicationObject(const ApplicationObject&) = delete;
    ApplicationObject& operator=(const ApplicationObject&) = delete;

    /// Leaves the name to the next instance. Calls that reach this one all the same still get a
    /// reply.
    void resign();

  private:
    void join(std::unique_ptr<MessageBus> bus);
    void onLost(const Error& error);
    void rejoin();
    void onReplyToClaim(sd_bus_message* reply);
    static int onActivate(sd_bus_message* call, void* self, sd_bus_error* error);
    static int onOpen(sd_bus_message* call, void* self, sd_bus_error* error);
    static int onAction(sd_bus_message* call, void* self, sd_bus_error* error);
    static const sd_bus_vtable methods[];

    platform::Log& log_;
    Handlers handlers_;
    MainLoop loop_;
    bool isLost_ = false;
    std::chrono::milliseconds retryInterval_{0};
    Deadline retryDeadline_{loop_};
    /// Empty while the bus cannot be joined.
    std::unique_ptr<MessageBus> bus_;
};

}  // namespace tarvik::linuxdesktop
