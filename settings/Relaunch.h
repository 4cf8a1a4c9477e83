// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "platform/Platform.h"

namespace tarvik {

/// Ends the application and starts a new instance after `delay`, so that this instance has ended by
/// then. `delay` is in seconds, in the format of the shell's sleep command. Main thread.
void relaunch(platform::Platform& platform, const std::string& delay);

}  // namespace tarvik
