// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

// What `types` describes, read as the library gives it.
template <typename Value, typename... Types>
std::optional<Value> valueIn(sd_bus_message* reply, Types... types) {
    Value value{};
    if (isError(reply) || sd_bus_message_read(reply, types..., &value) <= 0) {
        return std::nullopt;
    }
    return value;
}

template <typename... Types>
std::optional<std::string> textOf(sd_bus_message* reply, Types... types) {
    const auto text = valueIn<const char*>(reply, types...);
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

template <typename... Types>
std::optional<bool> booleanOf(sd_bus_message* reply, Types... types) {
    const auto value = valueIn<int>(reply, types...);
    return value ? std::optional(*value != 0) : std::nullopt;
}

}  // namespace

std::optional<std::string> textIn(sd_bus_message* reply) {
    return textOf(reply, "s");
}

std::optional<std::int32_t> integerIn(sd_bus_message* reply) {
    return valueIn<std::int32_t>(reply, "i");
}

std::optional<std::uint32_t> unsignedIn(sd_bus_message* reply) {
    return valueIn<std::uint32_t>(reply, "u");
}

std::optional<bool> booleanIn(sd_bus_message* reply) {
    return booleanOf(reply, "b");
}

std::optional<std::string> textPropertyIn(sd_bus_message* reply) {
    return textOf(reply, "v", "s");
}

std::optional<std::string> pathPropertyIn(sd_bus_message* reply) {
    return textOf(reply, "v", "o");
}

std::optional<std::int32_t> integerPropertyIn(sd_bus_message* reply) {
    return valueIn<std::int32_t>(reply, "v", "i");
}

std::optional<std::uint32_t> unsignedPropertyIn(sd_bus_message* reply) {
    return valueIn<std::uint32_t>(reply, "v", "u");
}

std::optional<bool> booleanPropertyIn(sd_bus_message* reply) {
    return booleanOf(reply, "v", "b");
}

bool isError(sd_bus_message* reply) {
    return sd_bus_message_is_method_error(reply, nullptr) > 0;
}

bool isNoReply(sd_bus_message* reply) {
    return sd_bus_message_is_method_error(reply, SD_BUS_ERROR_NO_REPLY) > 0;
}

}  // namespace tarvik::linuxdesktop
