// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/AtspiSession.h"

#include <chrono>
#include <string_view>
#include <utility>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

// Long enough for a bus that has to be started first.
constexpr std::chrono::seconds launchTimeout{20};

const BusObject launcher{"org.a11y.Bus", "/org/a11y/bus"};
constexpr const char* statusInterface = "org.a11y.Status";

std::string errorIn(sd_bus_message* reply) {
    const sd_bus_error* error = sd_bus_message_get_error(reply);
    return error && error->message ? error->message : "an answer of another kind";
}

}  // namespace

std::unique_ptr<AtspiSession> AtspiSession::open(EventLoop& loop, Handlers handlers) {
    auto bus = MessageBus::openSession();
    if (!bus) {
        return nullptr;
    }
    std::unique_ptr<AtspiSession> session(
        new AtspiSession(std::move(bus).value(), std::move(handlers)));
    session->bus_->attach(
        loop, [onLost = session->handlers_.onLost](const Error& /*error*/) { onLost(); });
    session->observeLauncher();
    session->queryAddress();
    session->queryEnabled();
    return session;
}

AtspiSession::AtspiSession(std::unique_ptr<MessageBus> bus, Handlers handlers)
    : handlers_(std::move(handlers)), bus_(std::move(bus)) {}

void AtspiSession::observeLauncher() {
    bus_->observe(
        "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
        "member='NameOwnerChanged',arg0='org.a11y.Bus'",
        [this](sd_bus_message* signal) {
            const char* name = nullptr;
            const char* oldOwner = nullptr;
            const char* newOwner = "";
            if (sd_bus_message_read(signal, "sss", &name, &oldOwner, &newOwner) <= 0) {
                return;
            }
            if (*newOwner) {
                queryAddress();
                queryEnabled();
            } else {
                handlers_.onEnabled(false);
                handlers_.onLauncherEnded();
            }
        });
    bus_->observe(
        "type='signal',path='/org/a11y/bus',interface='org.freedesktop.DBus.Properties',"
        "member='PropertiesChanged',arg0='org.a11y.Status'",
        [this](sd_bus_message* signal) { onPropertiesChanged(signal); });
}

void AtspiSession::queryAddress() {
    if (isQueryPending_) {
        return;
    }
    isQueryPending_ = bus_->call(bus_->newCall(launcher, "org.a11y.Bus", "GetAddress"),
                                 launchTimeout, [this](sd_bus_message* reply) {
                                     isQueryPending_ = false;
                                     if (const auto address = textIn(reply)) {
                                         handlers_.onAddress(*address);
                                     } else {
                                         handlers_.onMissing(errorIn(reply));
                                     }
                                 });
}

void AtspiSession::queryEnabled() {
    bus_->call(bus_->newPropertyCall(launcher, statusInterface, "IsEnabled"), launchTimeout,
               [this](sd_bus_message* reply) {
                   // A desktop without the switch has nothing switched on.
                   handlers_.onEnabled(booleanPropertyIn(reply).value_or(false));
               });
}

void AtspiSession::onPropertiesChanged(sd_bus_message* signal) {
    const char* interface = nullptr;
    if (sd_bus_message_read(signal, "s", &interface) <= 0 ||
        sd_bus_message_enter_container(signal, SD_BUS_TYPE_ARRAY, "{sv}") <= 0) {
        return;
    }
    while (sd_bus_message_enter_container(signal, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char* name = nullptr;
        if (sd_bus_message_read(signal, "s", &name) <= 0) {
            return;
        }
        if (std::string_view(name) != "IsEnabled") {
            sd_bus_message_skip(signal, "v");
        } else if (const auto isEnabled = booleanPropertyIn(signal)) {
            handlers_.onEnabled(*isEnabled);
        }
        sd_bus_message_exit_container(signal);
    }
}

void AtspiSession::enable() {
    bus_->send(bus_->newCall(launcher, "org.freedesktop.DBus.Properties", "Set", "ssv",
                             statusInterface, "IsEnabled", "b", 1));
}

}  // namespace tarvik::linuxdesktop
