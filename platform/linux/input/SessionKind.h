// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik::linuxdesktop {

/// Whether the session is one of Wayland, by WAYLAND_DISPLAY. Any thread, as long as nobody changes
/// the environment.
bool isWaylandSession();

}  // namespace tarvik::linuxdesktop
