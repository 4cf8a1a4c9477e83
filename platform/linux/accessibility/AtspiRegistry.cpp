// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/AtspiRegistry.h"

#include <chrono>
#include <utility>

#include "platform/linux/accessibility/AtspiProtocol.h"

namespace tarvik::linuxdesktop {

namespace {

// Long enough for a registry that has to be started first.
constexpr std::chrono::seconds registryTimeout{20};

}  // namespace

std::unique_ptr<AtspiRegistry> AtspiRegistry::open(EventLoop& loop, const std::string& address,
                                                   Handlers handlers) {
    auto bus = MessageBus::open(address);
    if (!bus) {
        return nullptr;
    }
    std::unique_ptr<AtspiRegistry> opened(
        new AtspiRegistry(std::move(bus).value(), std::move(handlers)));
    opened->bus_->attach(loop,
                         [onLost = opened->handlers_.onLost](const Error& /*error*/) { onLost(); });
    opened->registerEvents();
    return opened;
}

AtspiRegistry::AtspiRegistry(std::unique_ptr<MessageBus> bus, Handlers handlers)
    : handlers_(std::move(handlers)), bus_(std::move(bus)), focus_(*bus_, handlers_.onFocus) {
    bus_->observe(
        "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
        "member='NameOwnerChanged',arg0='org.a11y.atspi.Registry',arg2=''",
        [this](sd_bus_message* /*signal*/) {
            handlers_.onRegistered(false, "the registry has ended");
            // The call starts a new registry, which knows nothing of earlier registrations.
            registerEvents();
        });
}

void AtspiRegistry::registerEvents() {
    for (const char* event : {"window:activate", "window:deactivate"}) {
        bus_->call(
            bus_->newCall(atspi::registry, atspi::registryInterface, "RegisterEvent", "s", event),
            registryTimeout, [](sd_bus_message* /*reply*/) {
                // The reply to the last registration stands for all of them.
            });
    }
    bus_->call(bus_->newCall(atspi::registry, atspi::registryInterface, "RegisterEvent", "s",
                             "object:state-changed:focused"),
               registryTimeout, [this](sd_bus_message* reply) { onRegisterReply(reply); });
}

void AtspiRegistry::onRegisterReply(sd_bus_message* reply) {
    if (const sd_bus_error* error = sd_bus_message_get_error(reply)) {
        handlers_.onRegistered(false, error->message ? error->message : error->name);
        return;
    }
    handlers_.onRegistered(true, "");
    focus_.scan();
}

}  // namespace tarvik::linuxdesktop
