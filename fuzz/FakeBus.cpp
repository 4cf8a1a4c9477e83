// SPDX-License-Identifier: MIT

#include "fuzz/FakeBus.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstdint>
#include <cstring>
#include <string_view>

#include "fuzz/Promise.h"
#include "platform/linux/bus/BusHandles.h"

namespace tarvik::fuzz {

using linuxdesktop::BusHandle;
using linuxdesktop::FileDescriptor;

FakeBus::FakeBus(Script script)
    : script_(std::move(script)), listening_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    // The kernel chooses a name without a file.
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    socklen_t size = sizeof(sa_family_t);
    promise(bind(listening_.number(), reinterpret_cast<sockaddr*>(&name), size) == 0 &&
                listen(listening_.number(), 1) == 0,
            "a socket for the bus");
    size = sizeof name;
    getsockname(listening_.number(), reinterpret_cast<sockaddr*>(&name), &size);
    address_ = "unix:abstract=" +
               std::string(name.sun_path + 1, size - offsetof(sockaddr_un, sun_path) - 1);
    thread_ = std::thread([this] { serve(); });
}

FakeBus::~FakeBus() {
    shutdown(listening_.number(), SHUT_RDWR);
    thread_.join();
}

void FakeBus::serve() {
    const int client = accept4(listening_.number(), nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0) {
        return;
    }
    sd_bus* made = nullptr;
    sd_bus_new(&made);
    const BusHandle bus(made);
    constexpr sd_id128_t id{.bytes = {1}};
    sd_bus_set_fd(made, client, client);
    sd_bus_set_server(made, 1, id);
    sd_bus_add_filter(made, nullptr, &FakeBus::onMessage, this);
    sd_bus_start(made);
    while (true) {
        const int result = sd_bus_process(made, nullptr);
        if (result < 0 || (result == 0 && sd_bus_wait(made, UINT64_MAX) < 0)) {
            return;
        }
    }
}

int FakeBus::onMessage(sd_bus_message* message, void* self, sd_bus_error*) {
    std::uint8_t type = 0;
    sd_bus_message_get_type(message, &type);
    if (type != SD_BUS_MESSAGE_METHOD_CALL) {
        return 0;
    }
    const std::string_view member(sd_bus_message_get_member(message));
    if (member == "Hello") {
        sd_bus_reply_method_return(message, "s", ":1.1");
    } else if (member == "AddMatch" || member == "RemoveMatch") {
        sd_bus_reply_method_return(message, "");
    } else {
        static_cast<FakeBus*>(self)->script_(sd_bus_message_get_bus(message), message);
    }
    return 1;
}

}  // namespace tarvik::fuzz
