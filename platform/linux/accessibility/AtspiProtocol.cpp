// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/AtspiProtocol.h"

#include <string_view>

namespace tarvik::linuxdesktop::atspi {

std::optional<StateSet> stateSetIn(sd_bus_message* reply) {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    if (sd_bus_message_read(reply, "au", 2, &low, &high) <= 0) {
        return std::nullopt;
    }
    return StateSet(low | static_cast<std::uint64_t>(high) << 32U);
}

std::optional<std::vector<BusObject>> childrenIn(sd_bus_message* reply) {
    std::vector<BusObject> children;
    if (sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "(so)") <= 0) {
        return std::nullopt;
    }
    const char* owner = nullptr;
    const char* path = nullptr;
    while (sd_bus_message_read(reply, "(so)", &owner, &path) > 0) {
        children.push_back({owner, path});
    }
    return children;
}

std::optional<BusObject> objectPropertyIn(sd_bus_message* reply) {
    const char* owner = nullptr;
    const char* path = nullptr;
    if (sd_bus_message_read(reply, "v", "(so)", &owner, &path) <= 0) {
        return std::nullopt;
    }
    return BusObject{owner, path};
}

std::optional<BusObject> relatedObjectIn(sd_bus_message* reply, std::uint32_t relation) {
    if (sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "(ua(so))") <= 0) {
        return std::nullopt;
    }
    while (sd_bus_message_enter_container(reply, SD_BUS_TYPE_STRUCT, "ua(so)") > 0) {
        std::uint32_t kind = 0;
        if (sd_bus_message_read(reply, "u", &kind) <= 0) {
            return std::nullopt;
        }
        const auto targets = childrenIn(reply);
        if (kind == relation && targets && !targets->empty()) {
            return targets->front();
        }
        sd_bus_message_exit_container(reply);  // The array of the targets.
        sd_bus_message_exit_container(reply);
    }
    return std::nullopt;
}

std::optional<bool> hasEditableTextIn(sd_bus_message* reply) {
    if (sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "s") <= 0) {
        return std::nullopt;
    }
    const char* name = nullptr;
    while (sd_bus_message_read(reply, "s", &name) > 0) {
        if (std::string_view(name) == editableTextInterface) {
            return true;
        }
    }
    return false;
}

}  // namespace tarvik::linuxdesktop::atspi
