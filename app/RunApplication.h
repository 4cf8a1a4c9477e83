// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

namespace tarvik {

/// Runs the application on `platform` until Application::terminate(). Returns the exit status of
/// the process. Main thread, once.
int runApplication(platform::Platform& platform);

}  // namespace tarvik
