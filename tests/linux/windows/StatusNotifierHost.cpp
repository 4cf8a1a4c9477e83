// SPDX-License-Identifier: MIT

#include "tests/linux/windows/StatusNotifierHost.h"

#include <systemd/sd-bus.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace tarvik::tests {

struct NotifierInterface {
    static const std::array<sd_bus_vtable, 6>& table() {
        static const std::array<sd_bus_vtable, 6> entries = {
            {SD_BUS_VTABLE_START(0),
             SD_BUS_METHOD("RegisterStatusNotifierItem", "s", "", StatusNotifierHost::onRegister,
                           SD_BUS_VTABLE_UNPRIVILEGED),
             SD_BUS_PROPERTY("IsStatusNotifierHostRegistered", "b", StatusNotifierHost::readTrue, 0,
                             0),
             SD_BUS_SIGNAL("StatusNotifierHostRegistered", "", 0),
             SD_BUS_SIGNAL("StatusNotifierItemRegistered", "s", 0), SD_BUS_VTABLE_END}};
        return entries;
    }
};

StatusNotifierHost::StatusNotifierHost() : thread_([this] { run(); }) {
    isRunning_.wait(false);
}

StatusNotifierHost::~StatusNotifierHost() {
    isEnding_ = true;
    thread_.join();
}

std::string StatusNotifierHost::item() const {
    const std::shared_ptr<const std::string> item = item_.load();
    return item ? *item : "";
}

int StatusNotifierHost::onRegister(sd_bus_message* message, void* self, sd_bus_error*) {
    static_cast<StatusNotifierHost*>(self)->item_.store(
        std::make_shared<const std::string>(sd_bus_message_get_sender(message)));
    return sd_bus_reply_method_return(message, "");
}

int StatusNotifierHost::readTrue(sd_bus*, const char*, const char*, const char*,
                                 sd_bus_message* reply, void*, sd_bus_error*) {
    return sd_bus_message_append(reply, "b", 1);
}

void StatusNotifierHost::run() {
    constexpr const char* name = "org.kde.StatusNotifierWatcher";
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0 ||
        sd_bus_add_object_vtable(bus, nullptr, "/StatusNotifierWatcher", name,
                                 NotifierInterface::table().data(), this) < 0 ||
        sd_bus_request_name(bus, name, 0) < 0) {
        std::abort();
    }
    sd_bus_emit_signal(bus, "/StatusNotifierWatcher", name, "StatusNotifierHostRegistered", "");
    isRunning_ = true;
    isRunning_.notify_all();
    while (!isEnding_) {
        constexpr std::uint64_t microseconds = 10'000;
        while (sd_bus_process(bus, nullptr) > 0) {
        }
        sd_bus_wait(bus, microseconds);
    }
    sd_bus_flush_close_unref(bus);
}

}  // namespace tarvik::tests
