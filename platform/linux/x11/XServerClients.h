// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tarvik::linuxdesktop {

/// Whether a program is connected to the X server `display` of this machine, such as ":0". Asks the
/// kernel, since a connection would start a server that a compositor has not started yet. False for
/// a server that is reached in another way. Waits for no other program. Any thread.
bool hasClients(const std::string& display);

}  // namespace tarvik::linuxdesktop
