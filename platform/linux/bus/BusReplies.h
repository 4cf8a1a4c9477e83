// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <optional>
#include <string>

namespace tarvik::linuxdesktop {

// What replies hold. Each reader is empty when the message is an error or of another type. On the
// thread of the message's connection.

/// The text, number or truth value that a reply begins with.
std::optional<std::string> textIn(sd_bus_message* reply);
std::optional<std::int32_t> integerIn(sd_bus_message* reply);
std::optional<std::uint32_t> unsignedIn(sd_bus_message* reply);
std::optional<bool> booleanIn(sd_bus_message* reply);

/// The value of a property that was asked for.
std::optional<std::string> textPropertyIn(sd_bus_message* reply);
std::optional<std::string> pathPropertyIn(sd_bus_message* reply);
std::optional<std::int32_t> integerPropertyIn(sd_bus_message* reply);
std::optional<std::uint32_t> unsignedPropertyIn(sd_bus_message* reply);
std::optional<bool> booleanPropertyIn(sd_bus_message* reply);

/// Whether the message is an error of any kind.
bool isError(sd_bus_message* reply);
/// Whether the message says that nobody replied: the timeout passed, or the receiver left the bus.
bool isNoReply(sd_bus_message* reply);

}  // namespace tarvik::linuxdesktop
