// SPDX-License-Identifier: MIT

#include "platform/linux/portal/PortalReplies.h"

#include <functional>
#include <string_view>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

// Calls `onEntry` at the value of each entry of the dictionary that the message stands at; the
// callee reads the value, or returns false.
void readDictionary(sd_bus_message* message, const std::function<bool(std::string_view)>& onEntry) {
    if (sd_bus_message_enter_container(message, 'a', "{sv}") <= 0) {
        return;
    }
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* key = nullptr;
        if (sd_bus_message_read(message, "s", &key) <= 0 ||
            (!onEntry(key) && sd_bus_message_skip(message, "v") < 0) ||
            sd_bus_message_exit_container(message) < 0) {
            return;
        }
    }
}

}  // namespace

std::vector<std::string> shortcutNamesIn(sd_bus_message* message) {
    std::vector<std::string> names;
    if (sd_bus_message_enter_container(message, 'a', "(sa{sv})") <= 0) {
        return names;
    }
    while (sd_bus_message_enter_container(message, 'r', "sa{sv}") > 0) {
        const char* name = nullptr;
        if (sd_bus_message_read(message, "s", &name) <= 0) {
            return names;
        }
        names.emplace_back(name);
        if (sd_bus_message_skip(message, "a{sv}") < 0 ||
            sd_bus_message_exit_container(message) < 0) {
            return names;
        }
    }
    sd_bus_message_exit_container(message);
    return names;
}

std::vector<std::string> boundNamesIn(sd_bus_message* response) {
    std::vector<std::string> names;
    readDictionary(response, [&names, response](std::string_view key) {
        if (key != "shortcuts" || sd_bus_message_enter_container(response, 'v', "a(sa{sv})") <= 0) {
            return false;
        }
        names = shortcutNamesIn(response);
        return sd_bus_message_exit_container(response) > 0;
    });
    return names;
}

std::string sessionIn(sd_bus_message* response) {
    std::string session;
    readDictionary(response, [&session, response](std::string_view key) {
        const char* path = nullptr;
        // Portals send either.
        if (key != "session_handle" || (sd_bus_message_read(response, "v", "s", &path) <= 0 &&
                                        sd_bus_message_read(response, "v", "o", &path) <= 0)) {
            return false;
        }
        session = path;
        return true;
    });
    return sd_bus_object_path_is_valid(session.c_str()) > 0 ? session : "";
}

bool isNobodyThere(sd_bus_message* reply) {
    return sd_bus_message_is_method_error(reply, SD_BUS_ERROR_SERVICE_UNKNOWN) > 0 ||
           sd_bus_message_is_method_error(reply, SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0;
}

std::string errorTextOf(sd_bus_message* reply) {
    if (isNobodyThere(reply)) {
        return "the desktop's portal is gone";
    }
    if (isNoReply(reply)) {
        return "the desktop's portal does not answer";
    }
    const sd_bus_error* error = sd_bus_message_get_error(reply);
    return std::string("the desktop's portal refuses: ") +
           (error != nullptr && error->message != nullptr ? error->message : "no reason given");
}

}  // namespace tarvik::linuxdesktop
