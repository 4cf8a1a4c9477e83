#include "platform/linux/accessibility/AtspiSession.h"

#include <chrono>
#include <string_view>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// Long enough for a bus that has to be started first.
constexpr std::chrono::seconds patienceWithBus{20};

const BusObject accessibilityBus{"org.a11y.Bus", "/org/a11y/bus"};
constexpr const char* statusInterface = "org.a11y.Status";

std::string errorIn(sd_bus_message* answer) {
    const sd_bus_error* error = sd_bus_message_get_error(answer);
    return error && error->message ? error->message : "an answer of another kind";
}

}  // namespace

std::unique_ptr<AtspiSession> AtspiSession::open(Handlers handlers) {
    std::unique_ptr<MessageBus> bus = MessageBus::openSession();
    if (!bus) {
        return nullptr;
    }
    std::unique_ptr<AtspiSession> session(new AtspiSession(std::move(bus), std::move(handlers)));
    session->askForAddress();
    session->askWhetherEnabled();
    return session;
}

AtspiSession::AtspiSession(std::unique_ptr<MessageBus> bus, Handlers handlers)
    : handlers_(std::move(handlers)), bus_(std::move(bus)) {
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
                askForAddress();
                askWhetherEnabled();
            } else {
                handlers_.onEnabled(false);
                handlers_.onEnded();
            }
        });
    bus_->observe(
        "type='signal',path='/org/a11y/bus',interface='org.freedesktop.DBus.Properties',"
        "member='PropertiesChanged',arg0='org.a11y.Status'",
        [this](sd_bus_message* signal) { onPropertiesChanged(signal); });
}

void AtspiSession::askForAddress() {
    if (isAsking_) {
        return;
    }
    isAsking_ = bus_->call(bus_->newCall(accessibilityBus, "org.a11y.Bus", "GetAddress"),
                           patienceWithBus, [this](sd_bus_message* answer) {
                               isAsking_ = false;
                               const char* address = nullptr;
                               if (sd_bus_message_read(answer, "s", &address) > 0) {
                                   handlers_.onAddress(address);
                               } else {
                                   handlers_.onMissing(errorIn(answer));
                               }
                           });
}

void AtspiSession::askWhetherEnabled() {
    bus_->call(bus_->newPropertyCall(accessibilityBus, statusInterface, "IsEnabled"),
               patienceWithBus, [this](sd_bus_message* answer) {
                   // A desktop without the switch has nothing switched on.
                   handlers_.onEnabled(truthIn(answer).value_or(false));
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
        } else if (const auto isEnabled = truthIn(signal)) {
            handlers_.onEnabled(*isEnabled);
        }
        sd_bus_message_exit_container(signal);
    }
}

void AtspiSession::enable() {
    bus_->send(bus_->newCall(accessibilityBus, "org.freedesktop.DBus.Properties", "Set", "ssv",
                             statusInterface, "IsEnabled", "b", 1));
}

}  // namespace tarvik::linuxdesktop
