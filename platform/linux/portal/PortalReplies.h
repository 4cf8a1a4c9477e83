// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <string>
#include <vector>

namespace tarvik::linuxdesktop {

// What messages of the desktop's portal hold. On the thread of the message's connection.

/// The names in the list of shortcuts that the message stands at. As far as the list can be read.
std::vector<std::string> shortcutNamesIn(sd_bus_message* message);

/// The same, from the results of a response that the message stands at.
std::vector<std::string> boundNamesIn(sd_bus_message* response);
/// The path of the session in the results of a response that the message stands at. Empty without a
/// path.
std::string sessionIn(sd_bus_message* response);

/// Whether the reply is an error, since no portal is on the bus.
bool isNobodyThere(sd_bus_message* reply);
/// The error that a reply is, for the log.
std::string errorTextOf(sd_bus_message* reply);

}  // namespace tarvik::linuxdesktop
