// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tarvik::linuxdesktop {

/// The path of a program of this application that the desktop starts: beside the executable, or in
/// the folder of the packages. Empty when the program is missing. Any thread.
std::string helperPath(const std::string& name);

/// A path in the folder of the user's session, XDG_RUNTIME_DIR; empty without such a folder. Any
/// thread.
std::string runtimePath(const std::string& name);

}  // namespace tarvik::linuxdesktop
