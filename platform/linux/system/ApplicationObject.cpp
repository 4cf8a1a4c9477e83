// SPDX-License-Identifier: MIT

#include "platform/linux/system/ApplicationObject.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "platform/linux/bus/BusReplies.h"
#include "platform/linux/system/InstanceClaim.h"

namespace tarvik::linuxdesktop {

namespace {

// In characters.
constexpr std::size_t maxNameInLog = 100;

constexpr std::chrono::milliseconds firstRetryInterval{250};
constexpr std::chrono::milliseconds maxRetryInterval{8000};

// The id in the platform data that a call ends with. X11 desktops send "desktop-startup-id" and
// Wayland desktops "activation-token". A launcher that sends both gives them the same id.
std::string startupIdIn(sd_bus_message* call) {
    std::string startupId;
    std::string token;
    if (sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "{sv}") <= 0) {
        return startupId;
    }
    while (sd_bus_message_enter_container(call, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char* key = "";
        sd_bus_message_read(call, "s", &key);
        const std::string_view name(key);
        const char* value = nullptr;
        if (name != "desktop-startup-id" && name != "activation-token") {
            sd_bus_message_skip(call, "v");
        } else if (sd_bus_message_read(call, "v", "s", &value) > 0) {
            (name == "activation-token" ? token : startupId) = value;
        } else {
            sd_bus_message_skip(call, "v");
        }
        sd_bus_message_exit_container(call);
    }
    sd_bus_message_exit_container(call);
    return startupId.empty() ? token : startupId;
}

std::optional<platform::ApplicationAction> actionNamed(std::string_view name) {
    if (name == "toggle") {
        return platform::ApplicationAction::toggle;
    }
    if (name == "press") {
        return platform::ApplicationAction::press;
    }
    if (name == "release") {
        return platform::ApplicationAction::release;
    }
    if (name == "setup") {
        return platform::ApplicationAction::setup;
    }
    return std::nullopt;
}

}  // namespace

const sd_bus_vtable ApplicationObject::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Activate", "a{sv}", "", &ApplicationObject::onActivate,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Open", "asa{sv}", "", &ApplicationObject::onOpen, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ActivateAction", "sava{sv}", "", &ApplicationObject::onAction,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

ApplicationObject::ApplicationObject(std::unique_ptr<MessageBus> bus, const platform::Clock& clock,
                                     platform::Log& log, Handlers handlers)
    : log_(log), handlers_(std::move(handlers)), loop_(clock) {
    if (bus) {
        join(std::move(bus));
    } else {
        isLost_ = true;
        retryInterval_ = firstRetryInterval;
        rejoin();
    }
}

void ApplicationObject::join(std::unique_ptr<MessageBus> bus) {
    bus_ = std::move(bus);
    bus_->attach(loop_, [this](const Error& error) { onLost(error); });
    bus_->addObject(instancePath, instanceInterface, methods, this);
}

void ApplicationObject::onLost(const Error& error) {
    bus_.reset();
    if (!std::exchange(isLost_, true)) {
        log_.write("TarvikDictate: a second start goes unnoticed, the session bus is lost: " +
                   error.localizedDescription);
        retryInterval_ = firstRetryInterval;
    }
    retryDeadline_.set(retryInterval_, [this] { rejoin(); });
    retryInterval_ = std::min(2 * retryInterval_, maxRetryInterval);
}

void ApplicationObject::rejoin() {
    auto opened = MessageBus::openSession();
    if (!opened) {
        onLost(opened.error());
        return;
    }
    join(std::move(opened).value());
    bus_->call(newNameRequest(*bus_), MessageBus::noTimeout,
               [this](sd_bus_message* reply) { onReplyToClaim(reply); });
}

// A bus that is lost before it replies is told of by onLost() as well.
void ApplicationObject::onReplyToClaim(sd_bus_message* reply) {
    if (isError(reply)) {
        return;
    }
    isLost_ = false;
    log_.write(isNameOwner(reply)
                   ? "TarvikDictate: the session bus is back"
                   : "TarvikDictate: the session bus is back, and another instance has the name");
}

void ApplicationObject::resign() {
    retryDeadline_.clear();
    if (bus_) {
        bus_->releaseName(instanceName);
    }
}

int ApplicationObject::onActivate(sd_bus_message* call, void* self, sd_bus_error*) {
    static_cast<ApplicationObject*>(self)->handlers_.onReopen(startupIdIn(call));
    return sd_bus_reply_method_return(call, "");
}

// There are no documents: whatever is to be opened, the application comes forward.
int ApplicationObject::onOpen(sd_bus_message* call, void* self, sd_bus_error*) {
    sd_bus_message_skip(call, "as");
    static_cast<ApplicationObject*>(self)->handlers_.onReopen(startupIdIn(call));
    return sd_bus_reply_method_return(call, "");
}

int ApplicationObject::onAction(sd_bus_message* call, void* self, sd_bus_error* error) {
    const auto& object = *static_cast<ApplicationObject*>(self);
    const char* name = "";
    sd_bus_message_read(call, "s", &name);
    const std::optional<platform::ApplicationAction> action = actionNamed(name);
    if (!action) {
        // Another program chose the name, whatever its length.
        const std::string shortName = shortened(name, maxNameInLog);
        object.log_.write("TarvikDictate: there is no action called " + shortName);
        return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "There is no action called %s.",
                                 shortName.c_str());
    }
    sd_bus_message_skip(call, "av");
    object.handlers_.onAction(*action, startupIdIn(call));
    return sd_bus_reply_method_return(call, "");
}

}  // namespace tarvik::linuxdesktop
