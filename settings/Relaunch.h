#pragma once

#include <string>

#include "platform/Platform.h"

namespace tarvik {

/// Ends the application and has a new instance started once `delay` (seconds, as the shell's sleep
/// takes them) have passed, by when this one is gone. Main thread.
void relaunch(platform::Platform& platform, const std::string& delay);

}  // namespace tarvik
