// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

namespace tarvik::service {

/// The listening sockets that the service manager has passed to this process, as its variables
/// LISTEN_PID and LISTEN_FDS say. Takes the variables out of the environment, so that a second call
/// and child processes find none. Call it before any thread starts.
std::vector<int> takePassedSockets();

}  // namespace tarvik::service
