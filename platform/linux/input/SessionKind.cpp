// SPDX-License-Identifier: MIT

#include "platform/linux/input/SessionKind.h"

#include <cstdlib>

namespace tarvik::linuxdesktop {

bool isWaylandSession() {
    const char* display = std::getenv("WAYLAND_DISPLAY");
    return display != nullptr && *display != '\0';
}

}  // namespace tarvik::linuxdesktop
