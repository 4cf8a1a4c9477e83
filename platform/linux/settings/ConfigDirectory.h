// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tarvik::linuxdesktop {

/// The folder for the user's settings: $XDG_CONFIG_HOME when the variable is an absolute path,
/// otherwise ~/.config. Without a trailing slash; the folder need not exist. Any
/// thread, while no thread changes the environment.
std::string configDirectory();

}  // namespace tarvik::linuxdesktop
