#pragma once

#include <string>

namespace tarvik::linuxdesktop {

/// The folder for the user's settings, without a trailing slash: $XDG_CONFIG_HOME when that is an
/// absolute path, otherwise ~/.config. It need not exist.
std::string configDirectory();

}  // namespace tarvik::linuxdesktop
