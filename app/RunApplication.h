#pragma once

#include "platform/Platform.h"

namespace tarvik {

/// Runs the application on `platform` until it is told to terminate, and answers the process's exit
/// status. Main thread, once.
int runApplication(platform::Platform& platform);

}  // namespace tarvik
